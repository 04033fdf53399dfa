#include "engine/media/audio_channel_layout.h"

#include <new>
#include <utility>

namespace boxlift::media {

namespace {

bool isSpeaker(AVChannel channel) {
    return channel >= 0 && channel < 64;
}

AVChannel withoutSide(AVChannel channel) {
    if (channel == AV_CHAN_SIDE_LEFT)
        return AV_CHAN_BACK_LEFT;
    return channel == AV_CHAN_SIDE_RIGHT ? AV_CHAN_BACK_RIGHT : channel;
}

} // namespace

ChannelLayout::ChannelLayout(const AVChannelLayout& layout) {
    if (av_channel_layout_copy(&m_layout, &layout) < 0)
        throw std::bad_alloc();
}

ChannelLayout::ChannelLayout(const ChannelLayout& other) : ChannelLayout(other.m_layout) {}

ChannelLayout& ChannelLayout::operator=(ChannelLayout other) noexcept {
    std::swap(m_layout, other.m_layout);
    return *this;
}

ChannelLayout::~ChannelLayout() {
    av_channel_layout_uninit(&m_layout);
}

ChannelLayout ChannelLayout::ofMask(std::uint64_t mask) {
    ChannelLayout layout;
    av_channel_layout_from_mask(&layout.m_layout, mask);
    return layout;
}

ChannelLayout ChannelLayout::interpret(const AVChannelLayout& layout) {
    constexpr int mostUsual = 8;
    const int count = layout.nb_channels;
    // A single channel is heard from the middle, whatever speaker it was meant for.
    if (count == 1)
        return ofMask(AV_CH_LAYOUT_MONO);
    if (layout.order != AV_CHANNEL_ORDER_UNSPEC || count > mostUsual)
        return ChannelLayout(layout);
    // The libraries take three for 2.1, which would lose the third.
    if (count == 3)
        return ofMask(AV_CH_LAYOUT_SURROUND);
    ChannelLayout usual;
    av_channel_layout_default(&usual.m_layout, count);
    return usual;
}

AVChannel ChannelLayout::channel(int index) const {
    const AVChannel channel =
        av_channel_layout_channel_from_index(&m_layout, static_cast<unsigned>(index));
    return isSpeaker(channel) ? channel : AV_CHAN_NONE;
}

std::uint64_t ChannelLayout::speakers() const {
    std::uint64_t mask = 0;
    for (int i = 0; i < count(); ++i) {
        const AVChannel speaker = channel(i);
        if (speaker == AV_CHAN_NONE)
            return 0;
        mask |= std::uint64_t{1} << withoutSide(speaker);
    }
    return mask;
}

} // namespace boxlift::media
