#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <set>
#include <vector>

#include "fakes/fake_asset.h"

namespace boxlift::fakes {

/// A composition's track that remembers what was put into it.
class FakeCompositionTrack : public media::MutableCompositionTrack {
public:
    FakeCompositionTrack(media::MediaType trackType, std::int32_t trackId)
        : type(trackType), preferredId(trackId) {}

    media::MediaType mediaType() const override { return type; }
    std::vector<media::FormatDescription> formatDescriptions() const override {
        return source->formatDescriptions();
    }
    media::Size naturalSize() const override { return source->naturalSize(); }
    media::TimeRange timeRange() const override { return {insertedAt, inserted.duration}; }
    media::AffineTransform preferredTransform() const override { return transform; }

    void insertTimeRange(const media::TimeRange& range,
                         std::shared_ptr<const media::AssetTrack> sourceTrack,
                         media::Time at) override {
        throwIf(insertionError);
        inserted = range;
        source = std::move(sourceTrack);
        insertedAt = at;
    }
    void setPreferredTransform(const media::AffineTransform& value) override {
        transformWasSet = true;
        transform = value;
    }

    media::MediaType type;
    std::int32_t preferredId;
    media::TimeRange inserted;
    std::shared_ptr<const media::AssetTrack> source;
    media::Time insertedAt;
    media::AffineTransform transform;
    bool transformWasSet = false;
    std::exception_ptr insertionError;
};

/// A composition that refuses the tracks and insertions it is told to.
class FakeComposition : public media::MutableComposition {
public:
    bool isReadable() const override { return true; }
    media::Time duration() const override {
        media::Time end = media::Time::zero();
        for (const auto& track : added)
            end = std::max(end, track->timeRange().end());
        return end;
    }
    std::vector<std::shared_ptr<const media::AssetTrack>> tracks() const override {
        return {added.begin(), added.end()};
    }
    std::shared_ptr<media::MutableCompositionTrack>
    addMutableTrack(media::MediaType type, std::int32_t preferredTrackId) override {
        if (refused.contains(requests++))
            return nullptr;
        added.push_back(std::make_shared<FakeCompositionTrack>(type, preferredTrackId));
        added.back()->insertionError = insertionError;
        return added.back();
    }

    /// Which requests for a track are refused, counted from 0.
    std::set<int> refused;
    std::exception_ptr insertionError;
    int requests = 0;
    std::vector<std::shared_ptr<FakeCompositionTrack>> added;
};

} // namespace boxlift::fakes
