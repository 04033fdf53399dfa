#include "ui/support/pixels.h"

#include <algorithm>
#include <cmath>

namespace boxlift::test {

namespace {

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

float mixed(float top, float ground, float opacity) {
    return top * opacity + ground * (1 - opacity);
}

} // namespace

double contrast(const QColor& text, const QColor& ground) {
    const auto [darker, lighter] = std::minmax({luminance(text), luminance(ground)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor over(const QColor& top, const QColor& ground) {
    const float opacity = top.alphaF();
    return QColor::fromRgbF(mixed(top.redF(), ground.redF(), opacity),
                            mixed(top.greenF(), ground.greenF(), opacity),
                            mixed(top.blueF(), ground.blueF(), opacity));
}

int count(const QImage& image, const QRect& area, const QColor& color) {
    int found = 0;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x)
            found += image.pixelColor(x, y).rgb() == color.rgb() ? 1 : 0;
    }
    return found;
}

} // namespace boxlift::test
