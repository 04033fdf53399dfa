#pragma once

#include <QColor>
#include <QImage>
#include <QRect>

namespace boxlift::test {

/// How well one colour can be read on the other, from 1 to 21, as web accessibility rules count.
double contrast(const QColor& text, const QColor& ground);

/// The colour of `top`, with its opacity, laid over `ground`.
QColor over(const QColor& top, const QColor& ground);

/// How many pixels of the area have this very colour.
int count(const QImage& image, const QRect& area, const QColor& color);

} // namespace boxlift::test
