#pragma once

#include <QColor>
#include <QPainterPath>
#include <QQuickPaintedItem>
#include <QtQml/qqmlregistration.h>

namespace boxlift {

/// The highlight of a drag: a veil over its whole frame, and a dashed rounded outline that stays
/// inside the frame. Painted, for shapes have no anti-aliasing without a graphics card.
class DashedOutline : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged FINAL)
    Q_PROPERTY(double scaling READ scaling WRITE setScaling NOTIFY scalingChanged FINAL)

public:
    explicit DashedOutline(QQuickItem* parent = nullptr);

    QColor color() const { return m_color; }
    void setColor(const QColor& color);
    /// Factor of the stroke's sizes.
    double scaling() const { return m_scaling; }
    void setScaling(double scaling);

    void paint(QPainter* painter) override;

    /// A rounded rectangle whose corners ease into the edges. Starts at the top left.
    static QPainterPath smoothRectangle(const QRectF& frame, double radius);

signals:
    void colorChanged();
    void scalingChanged();

private:
    QColor m_color = Qt::blue;
    double m_scaling = 1;
};

} // namespace boxlift
