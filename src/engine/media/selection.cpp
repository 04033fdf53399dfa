#include "engine/media/selection.h"

#include <algorithm>

#include "engine/media/file_asset.h"
#include "engine/media/file_composition.h"

namespace boxlift::media {

namespace {

void add(Selection& selection, const FileTrack& track,
         const std::optional<AffineTransform>& transform) {
    const MediaType type = track.mediaType();
    if (type != MediaType::video && type != MediaType::audio)
        return;
    selection.streams.push_back(track.streamIndex());
    selection.transforms.push_back(transform);
    (type == MediaType::video ? selection.hasVideo : selection.hasAudio) = true;
}

Selection ofFile(const FileAsset& asset) {
    Selection selection;
    selection.file = asset.file();
    for (const auto& track : asset.tracks())
        add(selection, static_cast<const FileTrack&>(*track), std::nullopt);
    return selection;
}

Selection ofComposition(const FileComposition& composition) {
    Selection selection;
    selection.isWhole = false;
    selection.file = composition.file();
    for (const auto& track : composition.selection())
        if (track->source())
            add(selection, *track->source(), track->preferredTransform());
    return selection;
}

} // namespace

std::optional<Selection> Selection::of(const Asset& asset) {
    if (!asset.isReadable())
        return std::nullopt;
    Selection selection;
    if (const auto* file = dynamic_cast<const FileAsset*>(&asset))
        selection = ofFile(*file);
    else if (const auto* composition = dynamic_cast<const FileComposition*>(&asset))
        selection = ofComposition(*composition);
    if (selection.streams.empty())
        return std::nullopt;
    return selection;
}

bool Selection::contains(int stream) const {
    return std::find(streams.begin(), streams.end(), stream) != streams.end();
}

} // namespace boxlift::media
