#include "ui/system_font.h"

#include <algorithm>
#include <cmath>

#include <QEvent>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QScreen>

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

/// Asks no font engine, which would have to be made for it.
double pixelSize(const QFont& font) {
    if (font.pixelSize() > 0)
        return font.pixelSize();
    constexpr double pointsPerInch = 72;
    constexpr double usualDotsPerInch = 96;
    const QScreen* screen = QGuiApplication::primaryScreen();
    const double dotsPerInch = screen ? screen->logicalDotsPerInchY() : usualDotsPerInch;
    return std::round(font.pointSizeF() * dotsPerInch / pointsPerInch);
}

void drawLetters(const QFont& font) {
    QImage ground(1, 1, QImage::Format_RGB32);
    QPainter painter(&ground);
    painter.setFont(font);
    painter.drawText(0, 0,
                     QStringLiteral("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                    "0123456789 ,./~…"));
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

void SystemFont::prepare() {
    const SystemFont system;
    QFont font;
    font.setFamily(system.family());
    font.setPixelSize(system.body());
    drawLetters(font);
    font.setPixelSize(system.title2());
    font.setWeight(QFont::DemiBold);
    drawLetters(font);
}

int SystemFont::scaled(int pixels) const {
    return static_cast<int>(std::lround(pixels * m_scale));
}

void SystemFont::refresh() {
    const QString family = preferredFamily();
    const double scale = scaleFor(pixelSize(QGuiApplication::font()));
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
