#include "ui/window_icon.h"

#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace boxlift {

namespace {

// What title bars, task bars and switchers take, in pixels.
constexpr int sides[] = {16, 24, 32, 48, 64, 128};

QPixmap drawn(QSvgRenderer& drawing, int side) {
    QPixmap picture(side, side);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    drawing.render(&painter);
    return picture;
}

} // namespace

QIcon windowIcon() {
    QSvgRenderer drawing(QStringLiteral(":/boxlift/boxlift.svg"));
    QIcon icon;
    for (const int side : sides)
        icon.addPixmap(drawn(drawing, side));
    return icon;
}

} // namespace boxlift
