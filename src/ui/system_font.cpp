#include "ui/system_font.h"

#include <algorithm>

#include <QEvent>
#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>

namespace boxlift {

namespace {

// Desktops come with 9 to 11 points at 96 dots per inch.
constexpr double smallestUsualPixels = 12;
constexpr double largestUsualPixels = 15;
constexpr double smallestScale = 0.75;
constexpr double largestScale = 3;

QString preferredFamily() {
    const QString inter = QStringLiteral("Inter");
    return QFontDatabase::hasFamily(inter) ? inter : QGuiApplication::font().family();
}

} // namespace

SystemFont::SystemFont(QObject* parent) : QObject(parent) {
    qApp->installEventFilter(this);
    refresh();
}

double SystemFont::scaleFor(double pixels) {
    const double usual = std::clamp(pixels, smallestUsualPixels, largestUsualPixels);
    return std::clamp(pixels / usual, smallestScale, largestScale);
}

void SystemFont::refresh() {
    const QString family = preferredFamily();
    const double scale = scaleFor(QFontInfo(QGuiApplication::font()).pixelSize());
    if (family == m_family && scale == m_scale)
        return;
    m_family = family;
    m_scale = scale;
    emit changed();
}

bool SystemFont::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qApp && event->type() == QEvent::ApplicationFontChange)
        refresh();
    return QObject::eventFilter(watched, event);
}

} // namespace boxlift
