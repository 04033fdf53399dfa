#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "engine/media/audio_run.h"
#include "engine/media/av/handles.h"

namespace boxlift::test {

/// What decoded audio looks like.
struct FrameShape {
    std::string layout = "stereo"; ///< As FFmpeg names it; "24 channels" has no known order.
    int sampleRate = 44100;
    AVSampleFormat format = AV_SAMPLE_FMT_FLTP; ///< This one, AV_SAMPLE_FMT_FLT or _S16.
};

/// The value of a channel at a sample, -1 to 1.
using FrameSignal = std::function<double(int channel, std::int64_t sample)>;

/// A frame that shows `signal` from sample `start` on.
media::av::FramePtr makeFrame(const FrameShape& shape, int count, const FrameSignal& signal,
                              std::int64_t start = 0);

/// A sample of a frame of any of these formats, as a number from -1 to 1.
double sampleOf(const AVFrame& frame, int channel, int sample);

/// A sine of this frequency and amplitude in one channel, silence elsewhere; in all channels for a
/// negative number.
FrameSignal tone(double frequency, double amplitude, int sampleRate, int inChannel = -1);

} // namespace boxlift::test
