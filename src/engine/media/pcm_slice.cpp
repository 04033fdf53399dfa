#include "engine/media/pcm_slice.h"

#include <algorithm>
#include <new>

#include "engine/media/audio_encoder.h"

namespace boxlift::media {

namespace {

av::FramePtr makePlanes(int channels, std::int64_t count) {
    av::FramePtr frame = av::makeFrame();
    frame->format = AudioEncoder::sampleFormat;
    frame->nb_samples = static_cast<int>(count);
    av_channel_layout_default(&frame->ch_layout, channels);
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        throw std::bad_alloc();
    return frame;
}

} // namespace

PcmSlice clip(const PcmSlice& slice, std::int64_t begin, std::int64_t end) {
    PcmSlice part = slice;
    part.position = std::clamp(begin, slice.position, slice.end());
    part.count = std::max<std::int64_t>(0, std::min(end, slice.end()) - part.position);
    part.first += part.position - slice.position;
    return part;
}

AudioRun toRun(const PcmSlice& slice) {
    const int channels = slice.buffer->channels;
    AudioRun run{slice.position, slice.count, makePlanes(channels, slice.count)};
    const std::int16_t* samples = slice.buffer->samples.data() + slice.first * channels;
    for (int channel = 0; channel < channels; ++channel) {
        auto* plane = reinterpret_cast<float*>(run.frame->extended_data[channel]);
        for (std::int64_t i = 0; i < slice.count; ++i)
            plane[i] = static_cast<float>(samples[i * channels + channel]) / 32768.0F;
    }
    return run;
}

} // namespace boxlift::media
