#include "engine/media/joined_encoding.h"

#include <algorithm>
#include <thread>

#include "engine/media/audio_decoder.h"

namespace boxlift::test {

using namespace media;

void pushAll(StretchedEncoder& encoder, const StereoSound& sound, std::int64_t count) {
    // Of no size that fits frames or stretches.
    constexpr std::int64_t block = 7001;
    for (std::int64_t i = 0; i < count; i += block)
        if (!encoder.push(makeBuffer(sound, i, std::min(block, count - i)), i))
            return;
    encoder.close();
}

std::vector<av::PacketPtr> encode(const StretchPlan& plan, const StereoSound& sound,
                                  std::int64_t count) {
    StretchedEncoder encoder(stereo128, plan, "test");
    encoder.start();
    const std::jthread feeder([&] { pushAll(encoder, sound, count); });
    std::vector<av::PacketPtr> packets;
    while (av::PacketPtr packet = encoder.next())
        packets.push_back(std::move(packet));
    return packets;
}

std::vector<double> decode(const std::vector<av::PacketPtr>& packets) {
    const av::OutputContextPtr context(avformat_alloc_context());
    AVStream& stream = *avformat_new_stream(context.get(), nullptr);
    AudioEncoder(stereo128, "test").describe(stream);
    AudioDecoder decoder(stream, "test");
    std::vector<double> samples;
    const auto take = [&](const AVFrame& decoded, Time) {
        const auto* plane = reinterpret_cast<const float*>(decoded.extended_data[0]);
        samples.insert(samples.end(), plane, plane + decoded.nb_samples);
    };
    for (const av::PacketPtr& packet : packets)
        decoder.push(*packet, take);
    decoder.finish(take);
    samples.erase(samples.begin(), samples.begin() + frame); // Priming.
    return samples;
}

} // namespace boxlift::test
