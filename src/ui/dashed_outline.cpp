#include "ui/dashed_outline.h"

#include <algorithm>

#include <QPainter>
#include <QPen>

namespace boxlift {

namespace {

constexpr double lineWidth = 3;
constexpr double dashLength = 8;
constexpr double cornerRadius = 12;
constexpr double miterLimit = 10;
constexpr float veilOpacity = 0.08F;

// A corner begins this many radii before the edges' meeting point. The handles of its one curve
// are placed such that it passes where the circle's arc would.
constexpr double cornerReach = 1.5;
constexpr double cornerHandle = (8 * (1 - 0.70710678) - cornerReach) / 3;

QPen outlinePen(const QColor& color, double scaling) {
    QPen pen(color, lineWidth * scaling, Qt::CustomDashLine, Qt::FlatCap, Qt::MiterJoin);
    pen.setMiterLimit(miterLimit);
    // Counted in widths of the pen.
    pen.setDashPattern({dashLength / lineWidth, dashLength / lineWidth});
    return pen;
}

/// Goes along the edge to the corner, round it, and ends on the next edge.
void addCorner(QPainterPath& path, QPointF corner, QPointF alongFirst, QPointF alongSecond) {
    path.lineTo(corner - alongFirst * cornerReach);
    path.cubicTo(corner - alongFirst * cornerHandle, corner + alongSecond * cornerHandle,
                 corner + alongSecond * cornerReach);
}

} // namespace

DashedOutline::DashedOutline(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setAntialiasing(true);
}

void DashedOutline::setColor(const QColor& color) {
    if (color == m_color)
        return;
    m_color = color;
    emit colorChanged();
    update();
}

void DashedOutline::setScaling(double scaling) {
    if (scaling == m_scaling)
        return;
    m_scaling = scaling;
    emit scalingChanged();
    update();
}

QPainterPath DashedOutline::smoothRectangle(const QRectF& frame, double radius) {
    const double room = std::min(frame.width(), frame.height()) / (2 * cornerReach);
    const double fitted = std::clamp(radius, 0.0, std::max(room, 0.0));
    const QPointF right(fitted, 0);
    const QPointF down(0, fitted);
    QPainterPath path(frame.topLeft() + right * cornerReach);
    addCorner(path, frame.topRight(), right, down);
    addCorner(path, frame.bottomRight(), down, -right);
    addCorner(path, frame.bottomLeft(), -right, -down);
    addCorner(path, frame.topLeft(), -down, right);
    path.closeSubpath();
    return path;
}

void DashedOutline::paint(QPainter* painter) {
    const QRectF frame(0, 0, width(), height());
    const double inset = lineWidth * m_scaling / 2;
    QColor veil = m_color;
    veil.setAlphaF(veilOpacity);
    painter->fillRect(frame, veil);
    painter->setRenderHint(QPainter::Antialiasing);
    painter->strokePath(smoothRectangle(frame.adjusted(inset, inset, -inset, -inset),
                                        cornerRadius * m_scaling - inset),
                        outlinePen(m_color, m_scaling));
}

} // namespace boxlift
