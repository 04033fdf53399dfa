#include "engine/media/audio_decoder.h"

#include <algorithm>
#include <gtest/gtest.h>

#include "engine/media/audio_files.h"
#include "engine/media/av/demuxer.h"
#include "support/temp_folder.h"

namespace boxlift::media {

namespace {

/// Feeds the packets of a file's only stream to a decoder, each as `change` leaves it.
class Decoding {
public:
    explicit Decoding(const std::filesystem::path& path)
        : m_demuxer(av::Demuxer::open(InputFile::open(path), av::ProbeDepth::streams, {})),
          m_decoder(*m_demuxer->context().streams[0], path) {}

    void run(const std::function<void(AVPacket&, int)>& change) {
        const av::PacketPtr packet = av::makePacket();
        for (int number = 0; m_demuxer->read(*packet); ++number) {
            const av::PacketUnref guard{*packet};
            ASSERT_EQ(av_packet_make_writable(packet.get()), 0);
            change(*packet, number);
            m_decoder.push(*packet, sink());
        }
        m_decoder.finish(sink());
    }

    std::int64_t samples = 0;
    Time firstTime;

private:
    AudioDecoder::Sink sink() {
        return [this](const AVFrame& frame, Time at) {
            if (samples == 0)
                firstTime = at;
            samples += frame.nb_samples;
        };
    }

    std::unique_ptr<av::Demuxer> m_demuxer;
    AudioDecoder m_decoder;
};

void destroy(AVPacket& packet) {
    std::fill_n(packet.data, packet.size, std::uint8_t{0xff});
}

class AudioDecoderTest : public testing::Test {
protected:
    std::filesystem::path path() const { return m_folder.path() / "in.flac"; }
    static test::MediaSpec flac() {
        test::MediaSpec spec{.format = "flac", .seconds = 4, .audio = {{.codec = "flac"}}};
        return spec;
    }

private:
    test::TempFolder m_folder;
};

TEST_F(AudioDecoderTest, DecodesEverySample) {
    BOXLIFT_MAKE_MEDIA(path(), flac());
    Decoding decoding(path());
    decoding.run([](AVPacket&, int) {});
    EXPECT_EQ(decoding.samples, 4 * 44100);
    EXPECT_EQ(decoding.firstTime, Time::zero());
}

TEST_F(AudioDecoderTest, TakesThePrimingOffTheStartOfAac) {
    test::MediaSpec spec{.format = "mp4", .audio = {{}}};
    BOXLIFT_MAKE_MEDIA(path(), spec);
    Decoding decoding(path());
    decoding.run([](AVPacket&, int) {});
    EXPECT_EQ(decoding.firstTime, Time::zero());
    EXPECT_GE(decoding.samples, 44100);
    EXPECT_LT(decoding.samples, 44100 + 1024);
}

TEST_F(AudioDecoderTest, LeavesOutADamagedPacket) {
    BOXLIFT_MAKE_MEDIA(path(), flac());
    Decoding decoding(path());
    decoding.run([](AVPacket& packet, int number) {
        if (number == 5)
            destroy(packet);
    });
    EXPECT_LT(decoding.samples, 4 * 44100);
    EXPECT_GT(decoding.samples, 3 * 44100);
}

TEST_F(AudioDecoderTest, GivesUpWhenNothingCanBeDecoded) {
    BOXLIFT_MAKE_MEDIA(path(), flac());
    Decoding decoding(path());
    try {
        decoding.run([](AVPacket& packet, int) { destroy(packet); });
        FAIL() << "decoded " << decoding.samples << " samples of rubbish";
    } catch (const Error& error) {
        EXPECT_EQ(error.kind(), ErrorKind::cannotDecode);
    }
}

TEST_F(AudioDecoderTest, GivesUpWhenMostIsDamaged) {
    BOXLIFT_MAKE_MEDIA(path(), flac());
    Decoding decoding(path());
    EXPECT_THROW(decoding.run([](AVPacket& packet, int number) {
        if (number % 4 != 0)
            destroy(packet);
    }),
                 Error);
    EXPECT_GT(decoding.samples, 0);
}

TEST_F(AudioDecoderTest, SaysWhenThereIsNoDecoder) {
    BOXLIFT_MAKE_MEDIA(path(), flac());
    const auto demuxer = av::Demuxer::open(InputFile::open(path()), av::ProbeDepth::streams, {});
    AVStream& stream = *demuxer->context().streams[0];
    stream.codecpar->codec_id = AV_CODEC_ID_NONE;
    try {
        const AudioDecoder decoder(stream, path());
        FAIL() << "there is no such decoder";
    } catch (const Error& error) {
        EXPECT_EQ(error.kind(), ErrorKind::decoderMissing);
    }
}

} // namespace

} // namespace boxlift::media
