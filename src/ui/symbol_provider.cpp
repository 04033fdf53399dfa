#include "ui/symbol_provider.h"

#include <QColor>
#include <QFile>
#include <QPainter>
#include <QSvgRenderer>

namespace boxlift {

namespace {

QByteArray drawing(const QString& name) {
    QFile file(QStringLiteral(":/boxlift/icons/%1.svg").arg(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QRectF fitted(const QSizeF& shape, const QSizeF& box) {
    const QSizeF size = shape.scaled(box, Qt::KeepAspectRatio);
    return {QPointF((box.width() - size.width()) / 2, (box.height() - size.height()) / 2), size};
}

} // namespace

SymbolProvider::SymbolProvider() : QQuickImageProvider(QQuickImageProvider::Image) {}

QImage SymbolProvider::requestImage(const QString& id, QSize* size, const QSize& requestedSize) {
    const qsizetype slash = id.lastIndexOf(QLatin1Char('/'));
    const QColor color(QLatin1Char('#') + id.mid(slash + 1));
    QByteArray svg = drawing(id.left(slash));
    if (svg.isEmpty() || !color.isValid())
        return {};
    svg.replace("currentColor", color.name(QColor::HexRgb).toLatin1());
    QSvgRenderer renderer(svg);
    const QSize pixels = requestedSize.isEmpty() ? renderer.defaultSize() : requestedSize;
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(color.alphaF());
    renderer.render(&painter, fitted(renderer.viewBoxF().size(), pixels));
    *size = pixels;
    return image;
}

} // namespace boxlift
