#pragma once

#include <filesystem>
#include <optional>

#include "support/media_probe.h"

namespace boxlift::test {

/// Whether a picture track's luma means in an encoding what it means in the source: progressive, in
/// the standard range, in 8 bits of 4:2:0 (a track may say so and be tagged as RGB, which it is
/// then) and with square pixels.
bool isPlain(const ProbedStream& video);

/// The mean structural similarity of an encoding's first pictures to its source's, scaled to the
/// encoding's size; nothing when the two have no pictures of the same time.
std::optional<double> likeness(const std::filesystem::path& source,
                               const std::filesystem::path& output);

} // namespace boxlift::test
