#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>

#include "support/media_spec.h"

namespace boxlift::test {

/// The FFmpeg libraries of this computer lack an encoder: a reason to skip a test.
class MissingEncoder : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Writes a small media file, the same bytes for the same wishes. Throws MissingEncoder,
/// std::invalid_argument for wishes that nobody can fulfil, else std::runtime_error.
void makeMedia(const std::filesystem::path& output, const MediaSpec& spec);

/// The matrix that a video track with these wishes gets; none for an upright picture.
std::optional<DisplayMatrix> displayMatrix(const VideoSpec& spec);

} // namespace boxlift::test
