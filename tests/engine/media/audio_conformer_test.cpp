#include "engine/media/audio_conformer.h"

#include <gtest/gtest.h>
#include <vector>

#include "engine/media/audio_frames.h"

namespace boxlift::media {

namespace {

using LateStart = AudioConformer::LateStart;
using test::makeFrame;

constexpr AudioFormat format{44100, AV_CH_LAYOUT_MONO, AV_SAMPLE_FMT_FLT};

double one(int, std::int64_t) {
    return 1;
}

/// The runs of a conformer for mono at 44.1 kHz.
class Track {
public:
    explicit Track(Time end = {}, LateStart lateStart = LateStart::silence)
        : m_conformer({format, lateStart, end}, "test") {}

    Track& push(double at, int count = 4410, int sampleRate = 44100) {
        m_conformer.push(*makeFrame({"mono", sampleRate}, count, one), Time::fromSeconds(at),
                         [this](AudioRun run) { add(std::move(run)); });
        return *this;
    }
    Track& finish() {
        m_conformer.finish([this](AudioRun run) { add(std::move(run)); });
        return *this;
    }
    const AudioConformer& conformer() const { return m_conformer; }

    std::int64_t length = 0;
    std::int64_t sounding = 0;
    std::int64_t firstPosition = -1;
    std::vector<std::int64_t> soundStarts;

private:
    void add(AudioRun run) {
        if (firstPosition < 0)
            firstPosition = length = run.position;
        EXPECT_EQ(run.position, length);
        if (run.frame && (soundStarts.empty() || !m_lastSounded))
            soundStarts.push_back(run.position);
        m_lastSounded = run.frame != nullptr;
        sounding += run.frame ? run.count : 0;
        EXPECT_TRUE(!run.frame || run.frame->nb_samples == run.count);
        length += run.count;
    }

    AudioConformer m_conformer;
    bool m_lastSounded = false;
};

TEST(AudioConformer, BeginsWithSilenceWhereTheAudioStartsLate) {
    Track track;
    track.push(2).finish();
    EXPECT_EQ(track.firstPosition, 0);
    EXPECT_EQ(track.soundStarts, std::vector<std::int64_t>{88200});
    EXPECT_EQ(track.length, 88200 + 4410);
}

TEST(AudioConformer, BeginsLateWhereThatIsAskedFor) {
    Track track({}, LateStart::kept);
    track.push(2).finish();
    EXPECT_EQ(track.firstPosition, 88200);
    EXPECT_EQ(track.sounding, 4410);
}

TEST(AudioConformer, FillsAGapWithSilence) {
    Track track;
    track.push(0).push(0.1).push(0.7).finish();
    EXPECT_EQ(track.soundStarts, (std::vector<std::int64_t>{0, 30870}));
    EXPECT_EQ(track.sounding, 3 * 4410);
    EXPECT_EQ(track.length, 30870 + 4410);
}

TEST(AudioConformer, FillsAGapInTheMiddleOfResampling) {
    Track track;
    track.push(0, 4800, 48000).push(0.5, 4800, 48000).finish();
    EXPECT_EQ(track.soundStarts, (std::vector<std::int64_t>{0, 22050}));
    EXPECT_NEAR(static_cast<double>(track.length), 22050 + 4410, 1);
}

TEST(AudioConformer, TrimsOverlaps) {
    Track track;
    track.push(0).push(0.05).push(0.15).finish();
    EXPECT_EQ(track.length, 4410 * 2 + 2205);
    EXPECT_EQ(track.sounding, track.length);
}

TEST(AudioConformer, CutsAtTheDeclaredEnd) {
    Track track(Time::fromRate(6000, 44100));
    track.push(0).push(0.1).push(0.2).finish();
    EXPECT_EQ(track.length, 6000);
    EXPECT_TRUE(track.conformer().isComplete());
}

TEST(AudioConformer, AddsNothingUpToTheDeclaredEnd) {
    Track track(Time::fromSeconds(10));
    track.push(0).finish();
    EXPECT_EQ(track.length, 4410);
    EXPECT_FALSE(track.conformer().isComplete());
    EXPECT_EQ(track.conformer().end(), Time::fromSeconds(0.1));
}

TEST(AudioConformer, BoundsAnAbsurdGapByTheDeclaredEnd) {
    Track track(Time::fromSeconds(20));
    track.push(0).push(1e9).finish();
    EXPECT_EQ(track.length, 20 * 44100);
    EXPECT_EQ(track.sounding, 4410);
}

TEST(AudioConformer, BridgesAnAbsurdGapWhereNoEndIsDeclared) {
    Track track;
    track.push(0).push(1e9).finish();
    EXPECT_EQ(track.length, 2 * 4410);
}

TEST(AudioConformer, SkipsFramesWithoutContent) {
    const av::FramePtr empty = av::makeFrame();
    AudioConformer conformer({format, LateStart::silence, {}}, "test");
    conformer.push(*empty, Time::zero(), [](AudioRun) { FAIL() << "made of nothing"; });
    EXPECT_EQ(conformer.end(), Time::zero());
}

} // namespace

} // namespace boxlift::media
