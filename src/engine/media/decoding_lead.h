#pragma once

#include <cstdint>
#include <memory>
#include <stop_token>

#include "engine/media/input_file.h"

namespace boxlift::media {

/// By how much the decoding stamps of a movie's video stream must be moved back so that no packet
/// is shown before it is decoded, in the stream's time base; 0 in files written well. Some cameras
/// store composition offsets below zero (ISO/IEC 14496-12, 8.6.1.3, version 1), which puts the
/// shown times right and the decoding times late. Looks at the first packets.
std::int64_t decodingLead(std::shared_ptr<const InputFile> file, int stream, std::stop_token stop);

} // namespace boxlift::media
