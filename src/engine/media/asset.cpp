#include "engine/media/asset.h"

#include <algorithm>

namespace boxlift::media {

std::vector<std::shared_ptr<const AssetTrack>> Asset::loadTracks(MediaType type) const {
    auto all = tracks();
    std::erase_if(all, [type](const auto& track) { return track->mediaType() != type; });
    return all;
}

} // namespace boxlift::media
