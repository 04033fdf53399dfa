#include "support/media_measure.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <stdexcept>
#include <utility>
#include <vector>

#include "support/media_pattern.h"

namespace boxlift::test {

namespace {

constexpr int windowSize = 8;
constexpr int windowStep = 4;

std::vector<double> cut(const DecodedAudio& audio, const SampleRange& range) {
    std::vector<double> values;
    const std::size_t end = std::min(range.end, audio.length());
    for (std::size_t sample = range.begin; sample < end; ++sample) {
        values.push_back(audio.at(sample, range.channel));
    }
    return values;
}

struct WindowSums {
    double first = 0;
    double second = 0;
    double firstSquared = 0;
    double secondSquared = 0;
    double product = 0;
};

WindowSums sumWindow(const LumaFrame& first, const LumaFrame& second, int left, int top) {
    WindowSums sums;
    for (int y = top; y < top + windowSize; ++y) {
        for (int x = left; x < left + windowSize; ++x) {
            const double a = first.at(x, y);
            const double b = second.at(x, y);
            sums.first += a;
            sums.second += b;
            sums.firstSquared += a * a;
            sums.secondSquared += b * b;
            sums.product += a * b;
        }
    }
    return sums;
}

double windowSsim(const WindowSums& sums) {
    constexpr double count = windowSize * windowSize;
    constexpr double c1 = (0.01 * 255) * (0.01 * 255);
    constexpr double c2 = (0.03 * 255) * (0.03 * 255);
    const double meanA = sums.first / count;
    const double meanB = sums.second / count;
    const double varianceA = sums.firstSquared / count - meanA * meanA;
    const double varianceB = sums.secondSquared / count - meanB * meanB;
    const double covariance = sums.product / count - meanA * meanB;
    return (2 * meanA * meanB + c1) * (2 * covariance + c2) /
           ((meanA * meanA + meanB * meanB + c1) * (varianceA + varianceB + c2));
}

/// Where the sound rises through zero, between samples.
std::vector<double> risingCrossings(const std::vector<double>& values) {
    std::vector<double> crossings;
    for (std::size_t index = 1; index < values.size(); ++index) {
        const double before = values[index - 1];
        const double after = values[index];
        if (before < 0 && after >= 0) {
            crossings.push_back(static_cast<double>(index - 1) + before / (before - after));
        }
    }
    return crossings;
}

} // namespace

double toneLevel(const DecodedAudio& audio, double frequency, const SampleRange& range) {
    const std::vector<double> values = cut(audio, range);
    if (values.empty()) {
        return 0;
    }
    const double step = 2 * std::numbers::pi * frequency / audio.sampleRate;
    double last = 0;
    double beforeLast = 0;
    for (const double value : values) {
        const double next = value + 2 * std::cos(step) * last - beforeLast;
        beforeLast = std::exchange(last, next);
    }
    const double power =
        last * last + beforeLast * beforeLast - 2 * std::cos(step) * last * beforeLast;
    return 2 * std::sqrt(std::max(0.0, power)) / static_cast<double>(values.size());
}

double toneFrequency(const DecodedAudio& audio, const SampleRange& range) {
    const std::vector<double> crossings = risingCrossings(cut(audio, range));
    if (crossings.size() < 2) {
        return 0;
    }
    const double periods = static_cast<double>(crossings.size() - 1);
    return audio.sampleRate * periods / (crossings.back() - crossings.front());
}

double rms(const DecodedAudio& audio, const SampleRange& range) {
    const std::vector<double> values = cut(audio, range);
    double sum = 0;
    for (const double value : values) {
        sum += value * value;
    }
    return values.empty() ? 0 : std::sqrt(sum / static_cast<double>(values.size()));
}

std::size_t peakSample(const DecodedAudio& audio, const SampleRange& range) {
    const std::vector<double> values = cut(audio, range);
    if (values.empty()) {
        throw std::invalid_argument("no samples to search");
    }
    const auto size = [](double value) { return std::abs(value); };
    const auto peak = std::ranges::max_element(values, {}, size);
    return range.begin + static_cast<std::size_t>(peak - values.begin());
}

double ssim(const LumaFrame& first, const LumaFrame& second) {
    const bool sameSize = first.width == second.width && first.height == second.height;
    if (!sameSize || first.width < windowSize || first.height < windowSize) {
        throw std::invalid_argument("pictures that cannot be compared");
    }
    double sum = 0;
    int windows = 0;
    for (int top = 0; top + windowSize <= first.height; top += windowStep) {
        for (int left = 0; left + windowSize <= first.width; left += windowStep) {
            sum += windowSsim(sumWindow(first, second, left, top));
            ++windows;
        }
    }
    return sum / windows;
}

std::int64_t frameNumber(const LumaFrame& frame) {
    const int y = frame.height / (2 * counterRows);
    std::int64_t number = 0;
    for (int cell = 1; cell <= counterBits; ++cell) {
        const int x = (2 * cell + 1) * frame.width / (2 * counterColumns);
        number = 2 * number + (frame.at(x, y) > 125 ? 1 : 0);
    }
    return number;
}

} // namespace boxlift::test
