#include "support/corpus.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include <gtest/gtest.h>

#include "input/child.h"
#include "input/conversion_runner.h"
#include "support/media_probe.h"
#include "support/temp_folder.h"

namespace boxlift::test {

namespace {

constexpr double longestAnalysis = 5;

enum class Refusal { none, byExtension, byContent };

Refusal refusalOf(const Analysis& analysis) {
    if (analysis.info)
        return Refusal::none;
    return analysis.sentence.find("files can't be opened by macOS") != std::string::npos
               ? Refusal::byExtension
               : Refusal::byContent;
}

bool isOneOfTheTwoKinds(const std::string& sentence) {
    return sentence == "macOS can't open this file. It may be damaged or in a format AVFoundation "
                       "doesn't support." ||
           sentence.ends_with(" files can't be opened by macOS. Convert them with a tool like "
                              "ffmpeg or HandBrake first.");
}

/// Where the analysis and the prober of the manifest rightly disagree.
struct Known {
    std::string_view file;
    std::string_view what;
    std::string_view reason;
};

constexpr std::array known{
    Known{"audiofile-test-media/zero-channels.caf", "audio",
          "the prober leaves out sound that claims to have no channels"},
    Known{"mp4parse-rust/sine-3s-xhe-aac-44khz-mono.mp4", "audio",
          "the prober does not know this kind of AAC"},
    Known{"fate-suite/empty_edit_5s.mp4", "duration",
          "the prober leaves out the empty edit at the start"},
    Known{"jcodec/a01_0023.mp4", "duration", "the same"},
    Known{"mp4ff/vvc_400kbps_2s.mp4", "duration", "the same"},
    Known{"rails/rotated_video.mp4", "duration", "the same"},
    Known{"fuzzing-corpus/aac_hev2_sr22k_br32k_2c_16b_libfdk_aac.m4a", "duration",
          "the prober takes the length of the media, of which an edit shows 0.5 s"},
    Known{"media/sample_with_vobsub.mp4", "duration",
          "the subtitles are longer than sound and picture"},
    Known{"ExoPlayer/sample_scte35.ts", "duration",
          "splice messages lie before and behind the 0.1 s of sound and picture"},
    Known{"fate-suite/mov_neg_first_pts_discard_vorbis.wav", "duration",
          "the edit begins at 2 s of 7.4 s of sound and claims to show them all"},
    Known{"fate-suite/dnxhd100_cid1260.mov", "size",
          "the prober believes the stream, which knows nothing of the container's wide pixels"},
    Known{"web-platform-tests/four-colors.mp4", "size",
          "the prober has decoded a picture of another size than the header's"},
};

bool isKnown(const CorpusFile& file, std::string_view what) {
    return std::ranges::any_of(
        known, [&](const Known& row) { return row.file == file.name && row.what == what; });
}

class Checker {
public:
    explicit Checker(const CorpusFile& file, const MediaInfo& info) : m_file(file), m_info(info) {}

    void run() {
        expect("video", m_info.hasVideo == (m_file.videoTracks > 0));
        expect("audio", m_info.hasAudio == (m_file.audioTracks > 0));
        if (m_info.hasVideo && m_file.width > 0)
            expect("size", m_info.height == m_file.height && m_info.width == width());
        if (m_file.seconds)
            expect("duration", std::abs(m_info.duration - *m_file.seconds) <=
                                   std::max(0.05, 0.01 * *m_file.seconds));
    }

private:
    void expect(std::string_view what, bool holds) const {
        if (!holds && !isKnown(m_file, what))
            ADD_FAILURE() << m_file.name << ": " << what << ": video " << m_info.hasVideo
                          << ", audio " << m_info.hasAudio << ", " << m_info.width << 'x'
                          << m_info.height << ", " << m_info.duration << " s; the manifest says "
                          << m_file.videoTracks << ", " << m_file.audioTracks << ", "
                          << m_file.width << 'x' << m_file.height << ", "
                          << m_file.seconds.value_or(-1) << " s";
    }

    std::int64_t width() const {
        if (m_info.width == m_file.width && !m_file.tags.contains("sar"))
            return m_file.width;
        const Ratio aspect = probe(m_file.path).video().sampleAspect;
        return static_cast<std::int64_t>(m_file.width * (1.0 * aspect.numerator) /
                                         aspect.denominator);
    }

    const CorpusFile& m_file;
    const MediaInfo& m_info;
};

} // namespace

TEST(Corpus, AFolderThatIsNamedMustBeThere) {
    const TempFolder folder;
    const std::string outcome = inChild(Rights::asTheyAre, [&]() -> std::string {
        ::setenv("BOXLIFT_CORPUS", (folder.path() / "absent").c_str(), 1);
        try {
            corpusFiles(folder.path());
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "no error";
    });
    EXPECT_NE(outcome.find("BOXLIFT_CORPUS is set, but cannot be read"), std::string::npos)
        << outcome;
}

TEST(Corpus, GeneratedFilesStandInWhereNoFolderIsNamed) {
    const TempFolder folder;
    const std::string outcome = inChild(Rights::asTheyAre, [&] {
        ::unsetenv("BOXLIFT_CORPUS");
        std::string names;
        for (const CorpusFile& file : corpusFiles(folder.path()))
            names += file.name + (analyze(file.path).info ? " ready\n" : " refused\n");
        return names;
    });
    EXPECT_EQ(outcome, "plain.mp4 ready\nrotated.mov ready\nfragmented.mp4 ready\n"
                       "sound.m4a ready\nstream.ts ready\nsound.wav ready\n"
                       "matroska-renamed.mp4 refused\n");
}

TEST(Corpus, EveryFileIsDescribedOrRefusedWithASentence) {
    const TempFolder folder;
    int ready = 0;
    int refusedByExtension = 0;
    int refusedByContent = 0;
    double seconds = 0;
    const auto files = corpusFiles(folder.path());
    for (const CorpusFile& file : files) {
        SCOPED_TRACE(file.name);
        const Analysis analysis = analyze(file.path);
        seconds += analysis.seconds;
        EXPECT_LT(analysis.seconds, longestAnalysis) << file.name;
        const Refusal refusal = refusalOf(analysis);
        ready += refusal == Refusal::none ? 1 : 0;
        refusedByExtension += refusal == Refusal::byExtension ? 1 : 0;
        refusedByContent += refusal == Refusal::byContent ? 1 : 0;
        if (analysis.info)
            Checker(file, *analysis.info).run();
        else
            EXPECT_TRUE(isOneOfTheTwoKinds(analysis.sentence)) << analysis.sentence;
    }
    std::cout << files.size() << " files: " << ready << " ready, " << refusedByExtension
              << " refused by extension, " << refusedByContent << " by content, in " << seconds
              << " s\n";
    EXPECT_GT(ready, 0);
}

} // namespace boxlift::test
