#include <cmath>
#include <stdexcept>

#include "support/media_generator.h"

namespace boxlift::test {

namespace {

/// Of a picture that is turned clockwise and put back into the corner at (0, 0).
DisplayMatrix rotate(int degrees, double width, double height) {
    switch (degrees) {
    case 0:
        return {};
    case 90:
        return {0, 1, -1, 0, height, 0};
    case 180:
        return {-1, 0, 0, -1, width, height};
    case 270:
        return {0, -1, 1, 0, 0, width};
    default:
        throw std::invalid_argument("a rotation is 0, 90, 180 or 270 degrees");
    }
}

} // namespace

std::optional<DisplayMatrix> displayMatrix(const VideoSpec& spec) {
    if (spec.displayMatrix || (spec.rotation == 0 && !spec.mirrored)) {
        return spec.displayMatrix;
    }
    const double aspect =
        static_cast<double>(spec.sampleAspect.numerator) / spec.sampleAspect.denominator;
    const double width = std::round(spec.width * aspect);
    DisplayMatrix matrix = rotate(spec.rotation, width, spec.height);
    if (spec.mirrored) {
        // The flip comes first: x becomes width - x.
        matrix.tx += matrix.a * width;
        matrix.ty += matrix.b * width;
        matrix.a = -matrix.a;
        matrix.b = -matrix.b;
    }
    return matrix;
}

} // namespace boxlift::test
