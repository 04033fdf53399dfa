#pragma once

#include <filesystem>

#include "engine/media/av/handles.h"

namespace boxlift::media::av {

enum class DecoderThreads { one, allCores };

/// A decoder for the packets of `stream`, ready to take them. Throws media::Error.
CodecContextPtr openDecoder(const AVStream& stream, DecoderThreads threads,
                            const std::filesystem::path& path);

} // namespace boxlift::media::av
