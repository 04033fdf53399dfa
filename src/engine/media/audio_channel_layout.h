#pragma once

#include <cstdint>

#include "engine/media/av/ffmpeg.h"

namespace boxlift::media {

/// An AVChannelLayout that frees what it owns.
class ChannelLayout {
public:
    ChannelLayout() = default;
    explicit ChannelLayout(const AVChannelLayout& layout);
    /// The channels of a mask, in the mask's order.
    static ChannelLayout ofMask(std::uint64_t mask);
    /// The layout with the unspoken order of channels made explicit where there is a usual one: one
    /// is mono, two are stereo, three to eight the usual arrangements.
    static ChannelLayout interpret(const AVChannelLayout& layout);

    ChannelLayout(const ChannelLayout& other);
    ChannelLayout& operator=(ChannelLayout other) noexcept;
    ~ChannelLayout();

    const AVChannelLayout& get() const { return m_layout; }
    /// For calls that want a pointer to a layout that they do not change.
    AVChannelLayout* address() { return &m_layout; }
    int count() const { return m_layout.nb_channels; }
    /// The speaker that a channel is meant for; AV_CHAN_NONE when that is not known.
    AVChannel channel(int index) const;
    /// The mask of the speakers in use, side ones counted as back ones; 0 when one is not known.
    std::uint64_t speakers() const;

    friend bool operator==(const ChannelLayout& a, const ChannelLayout& b) {
        return av_channel_layout_compare(&a.m_layout, &b.m_layout) == 0;
    }

private:
    AVChannelLayout m_layout{};
};

} // namespace boxlift::media
