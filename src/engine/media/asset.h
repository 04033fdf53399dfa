#pragma once

#include <memory>
#include <vector>

#include "engine/media/time.h"
#include "model/four_char_code.h"

namespace boxlift::media {

enum class MediaType { video, audio, text, timecode, other };

/// One way in which a track's samples are stored (the "sample entry" of ISO/IEC 14496-12).
struct FormatDescription {
    FourCharCode mediaSubType = 0;
};

/// Pixels. Components may be negative in odd files.
struct Size {
    double width = 0;
    double height = 0;

    friend bool operator==(const Size&, const Size&) = default;
};

/// Maps (x, y) to (a x + c y + tx, b x + d y + ty).
struct AffineTransform {
    double a = 1;
    double b = 0;
    double c = 0;
    double d = 1;
    double tx = 0;
    double ty = 0;

    friend bool operator==(const AffineTransform&, const AffineTransform&) = default;
};

/// One track of an asset. Immutable; any thread. Every load may throw media::Error.
class AssetTrack {
public:
    virtual ~AssetTrack() = default;

    virtual MediaType mediaType() const = 0;
    /// Possibly empty.
    virtual std::vector<FormatDescription> formatDescriptions() const = 0;
    /// Pixel aspect ratio applied, rotation not.
    virtual Size naturalSize() const = 0;
    /// Where the track lies on the asset's timeline, edits applied: it starts late when its first
    /// edit is empty.
    virtual TimeRange timeRange() const = 0;
    /// How the stored picture is turned for display, for a picture with its corner at (0, 0).
    virtual AffineTransform preferredTransform() const = 0;
};

/// A file or a composition: tracks on one timeline. Cover art and chapters are not tracks.
/// Any thread. Every load may throw media::Error.
class Asset {
public:
    virtual ~Asset() = default;

    /// False when the media is protected.
    virtual bool isReadable() const = 0;
    /// The edited length; invalid when unknown.
    virtual Time duration() const = 0;
    /// In the file's own order.
    virtual std::vector<std::shared_ptr<const AssetTrack>> tracks() const = 0;
    /// Those of one kind, in the same order.
    virtual std::vector<std::shared_ptr<const AssetTrack>> loadTracks(MediaType type) const;
};

} // namespace boxlift::media
