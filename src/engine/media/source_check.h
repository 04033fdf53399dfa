#pragma once

#include <filesystem>
#include <span>

#include "engine/media/av/ffmpeg.h"
#include "engine/media/input_file.h"
#include "engine/media/time.h"

namespace boxlift::media {

/// Throws media::Error for one of the listed streams of a movie: sourceUnreadable when its samples
/// lie in another file, sourceEndsEarly when its index names a sample past the end of this one.
void checkIndexedSamples(const AVFormatContext& context, std::span<const int> streams,
                         const InputFile& file);

/// Throws media::Error (sourceEndsEarly) when a sound file's samples end well before the length
/// that its header states: by more than the larger of one second and one per cent.
void checkStatedData(const AVFormatContext& context, const InputFile& file);

/// Whether a track whose container declares its end has really ended earlier than that by more than
/// the larger of one second and one per cent; false when one of the two is unknown.
bool endsEarly(Time declared, Time reached);

/// Throws media::Error (sourceEndsEarly) when it does.
void checkDeclaredEnd(Time declared, Time reached, const std::filesystem::path& path);

} // namespace boxlift::media
