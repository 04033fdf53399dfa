#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "engine/media/asset.h"
#include "engine/media/input_file.h"

namespace boxlift::media {

/// What of one file an export takes: a whole asset, or a composition's tracks.
struct Selection {
    std::shared_ptr<const InputFile> file;
    /// Everything, other kinds of track too; else the listed streams alone.
    bool isWhole = true;
    /// Numbers of the streams of sound and picture, in order.
    std::vector<int> streams;
    /// Of each of `streams`: how its picture is turned, where a composition says so.
    std::vector<std::optional<AffineTransform>> transforms;
    bool hasVideo = false;
    bool hasAudio = false;

    /// Nothing when the asset cannot be exported: no sound or picture, protected.
    static std::optional<Selection> of(const Asset& asset);

    bool contains(int stream) const;
};

} // namespace boxlift::media
