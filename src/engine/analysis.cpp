#include <cmath>
#include <optional>
#include <vector>

#include "engine/cancellation.h"
#include "engine/converter.h"
#include "engine/media/error.h"
#include "engine/refusal.h"

namespace boxlift::Converter {

namespace {

/// What `load` delivers, or `fallback` when it fails; the reason goes to the log alone.
template <typename Value, typename Load>
Value loadOr(Value fallback, const std::stop_token& stop, Load load) {
    try {
        return load();
    } catch (const Cancelled&) {
        throw;
    } catch (const std::exception& error) {
        throwIfStopped(stop);
        media::logError(error);
        return fallback;
    }
}

std::optional<FourCharCode> firstCode(const media::AssetTrack& track, const std::stop_token& stop) {
    const auto formats = loadOr(std::vector<media::FormatDescription>(), stop,
                                [&] { return track.formatDescriptions(); });
    if (formats.empty())
        return std::nullopt;
    return formats.front().mediaSubType;
}

/// Whole pixels; 0 for what is no number of pixels.
std::int64_t pixels(double length) {
    const double magnitude = std::abs(length);
    return magnitude < 0x1p63 ? static_cast<std::int64_t>(magnitude) : 0;
}

void takeTrack(MediaInfo& info, const media::AssetTrack& track, const std::stop_token& stop) {
    const auto code = firstCode(track, stop);
    const media::MediaType type = track.mediaType();
    if (type == media::MediaType::video && !info.hasVideo) {
        info.hasVideo = true;
        info.videoCodec = code;
        const auto size = loadOr(media::Size(), stop, [&] { return track.naturalSize(); });
        info.width = pixels(size.width);
        info.height = pixels(size.height);
    } else if (type == media::MediaType::audio && !info.hasAudio) {
        info.hasAudio = true;
        info.audioCodec = code;
    }
}

/// Nothing when there is neither video nor audio that could be read.
std::optional<MediaInfo> describe(const media::Asset& asset, const std::stop_token& stop) {
    const bool isReadable = asset.isReadable();
    const media::Time duration = asset.duration();
    const auto tracks = asset.tracks();
    if (!isReadable)
        return std::nullopt;
    MediaInfo info;
    info.duration = duration.seconds();
    for (const auto& track : tracks) {
        throwIfStopped(stop);
        takeTrack(info, *track, stop);
    }
    if (!info.hasVideo && !info.hasAudio)
        return std::nullopt;
    return info;
}

/// Nothing when the file cannot be converted.
std::optional<MediaInfo> inspect(const std::filesystem::path& url, const std::stop_token& stop,
                                 const media::Factory& factory) {
    return loadOr(std::optional<MediaInfo>(), stop, [&] {
        const auto asset = factory.openAsset(url, stop);
        return describe(*asset, stop);
    });
}

} // namespace

MediaInfo analyze(const std::filesystem::path& url, std::stop_token stop,
                  const media::Factory& factory) {
    throwIfStopped(stop);
    refuseUnsupported(url);
    const auto info = inspect(url, stop, factory);
    if (info)
        return *info;
    throwIfStopped(stop);
    throw cannotOpen();
}

} // namespace boxlift::Converter
