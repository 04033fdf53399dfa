#include "engine/converter.h"

namespace boxlift::Converter {

namespace {

void copyTrack(media::MutableComposition& composition, media::MediaType type,
               const std::shared_ptr<const media::AssetTrack>& source) {
    const auto track =
        composition.addMutableTrack(type, media::MutableComposition::persistentTrackIdInvalid);
    if (!track)
        return;
    const media::TimeRange range = source->timeRange();
    // At its own start, not at zero: a track that begins late stays late.
    track->insertTimeRange(range, source, range.start);
    if (type == media::MediaType::video)
        track->setPreferredTransform(source->preferredTransform());
}

void copyTracks(media::MutableComposition& composition, const media::Asset& asset,
                media::MediaType type) {
    for (const auto& source : asset.loadTracks(type))
        copyTrack(composition, type, source);
}

} // namespace

std::shared_ptr<media::MutableComposition> composition(const media::Asset& asset, bool video,
                                                       bool audio, const media::Factory& factory) {
    auto result = factory.makeComposition();
    if (video)
        copyTracks(*result, asset, media::MediaType::video);
    if (audio)
        copyTracks(*result, asset, media::MediaType::audio);
    return result;
}

} // namespace boxlift::Converter
