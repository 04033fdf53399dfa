#pragma once

#include <cstdint>

namespace boxlift::media {

class PacketSource;

/// How many samples a track is going to have, and what its index will have to say of them.
struct ExpectedSamples {
    std::int64_t count = 0;
    /// Stretches of samples that last equally long.
    std::int64_t timeRuns = 0;
    /// Samples that can be decoded by themselves.
    std::int64_t keys = 0;
    std::int64_t bytes = 0;
    /// Whether they are shown in another order than they are decoded in.
    bool mayBeReordered = false;
    /// Whether it is known that there will not be more of anything.
    bool isCertain = false;
};

/// Of a stream that is copied: what the source's index tells, or else what its length and rate make
/// probable.
ExpectedSamples copiedSamples(const PacketSource& source, int stream);

/// Of a stream that is encoded anew, in about as many bytes.
ExpectedSamples encodedSamples(const PacketSource& source, int stream);

} // namespace boxlift::media
