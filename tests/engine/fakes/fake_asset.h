#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "engine/media/asset.h"
#include "fakes/hook.h"

namespace boxlift::fakes {

/// A track whose every answer, or error, the test sets.
class FakeTrack : public media::AssetTrack {
public:
    explicit FakeTrack(media::MediaType trackType) : type(trackType) {}

    media::MediaType mediaType() const override { return type; }
    std::vector<media::FormatDescription> formatDescriptions() const override {
        ++formatLoads;
        call(onFormatLoad);
        throwIf(formatError);
        return formats;
    }
    media::Size naturalSize() const override {
        ++sizeLoads;
        call(onSizeLoad);
        throwIf(sizeError);
        return size;
    }
    media::TimeRange timeRange() const override {
        throwIf(rangeError);
        return range;
    }
    media::AffineTransform preferredTransform() const override {
        ++transformLoads;
        throwIf(transformError);
        return transform;
    }

    media::MediaType type;
    std::vector<media::FormatDescription> formats;
    media::Size size;
    media::TimeRange range{media::Time::zero(), media::Time::fromSeconds(1)};
    media::AffineTransform transform;
    std::exception_ptr formatError;
    std::exception_ptr sizeError;
    std::exception_ptr rangeError;
    std::exception_ptr transformError;
    Hook onFormatLoad;
    Hook onSizeLoad;
    mutable int formatLoads = 0;
    mutable int sizeLoads = 0;
    mutable int transformLoads = 0;
};

inline std::shared_ptr<FakeTrack> videoTrack(FourCharCode code, media::Size size) {
    auto track = std::make_shared<FakeTrack>(media::MediaType::video);
    track->formats = {{code}};
    track->size = size;
    return track;
}

inline std::shared_ptr<FakeTrack> audioTrack(FourCharCode code) {
    auto track = std::make_shared<FakeTrack>(media::MediaType::audio);
    track->formats = {{code}};
    return track;
}

/// An asset whose every answer, or error, the test sets.
class FakeAsset : public media::Asset {
public:
    explicit FakeAsset(std::vector<std::shared_ptr<const media::AssetTrack>> itsTracks = {})
        : trackList(std::move(itsTracks)) {}

    bool isReadable() const override {
        throwIf(readableError);
        return readable;
    }
    media::Time duration() const override {
        throwIf(durationError);
        return length;
    }
    std::vector<std::shared_ptr<const media::AssetTrack>> tracks() const override {
        throwIf(tracksError);
        return trackList;
    }

    std::vector<std::shared_ptr<const media::AssetTrack>> trackList;
    bool readable = true;
    media::Time length = media::Time::fromSeconds(10);
    std::exception_ptr readableError;
    std::exception_ptr durationError;
    std::exception_ptr tracksError;
};

} // namespace boxlift::fakes
