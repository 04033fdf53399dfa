#include "engine/media/av/handles.h"

#include <new>

namespace boxlift::media::av {

PacketPtr makePacket() {
    PacketPtr packet(av_packet_alloc());
    if (!packet)
        throw std::bad_alloc();
    return packet;
}

FramePtr makeFrame() {
    FramePtr frame(av_frame_alloc());
    if (!frame)
        throw std::bad_alloc();
    return frame;
}

} // namespace boxlift::media::av
