#pragma once

#include <string>
#include <string_view>

/// Which containers are opened, by the names of FFmpeg's demuxers.
namespace boxlift::media::containers {

/// Comma-separated, for the demuxer's allow-list.
const std::string& allowedDemuxers();

/// The demuxer of the files that begin like this, where these bytes leave no doubt; else null.
const char* demuxerOf(std::string_view start);

/// Whether the container's header tells its tracks, codecs and length, so that no packet need be
/// read. `demuxer` is the name of an opened container's demuxer.
bool hasFullHeader(std::string_view demuxer);

} // namespace boxlift::media::containers
