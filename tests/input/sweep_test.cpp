#include <algorithm>
#include <array>
#include <chrono>
#include <iostream>
#include <map>
#include <ostream>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "input/conversion_runner.h"
#include "input/source_comparison.h"
#include "model/job_rules.h"
#include "support/corpus.h"
#include "support/temp_folder.h"

namespace boxlift::test {

namespace fs = std::filesystem;

namespace {

/// Of the small files of the corpus some of each trait are converted, and every so many besides.
constexpr std::array traits{
    "rotated",    "fragmented",    "editlist",        "multi-audio",  "cover",
    "chapters",   "hdr",           "interlaced",      "he-aac",       "he-aac-v2",
    "hibit",      "vfr",           "odd-dims",        "sar",          "start-offset",
    "empty-edit", "multi-edit",    "surround",        "mono",         "video-only",
    "subtitles",  "timecode",      "data-track",      "alpha",        "portrait",
    "mirrored",   "hirate",        "lowrate",         "24bit",        "yuv422",
    "yuv444",     "fullrange",     "multi-video",     "multi-stsd",   "one-frame",
    "truncated",  "corrupt",       "odd-name",        "no-ftyp",      "renamed",
    "m2ts",       "multi-program", "compressed-moov", "dolby-vision", "raw-adts",
    "mebx",       "aac-main",      "aac-eld",         "multich"};
/// Parts of each target.
constexpr int parts = 4;
constexpr int perTrait = 2;
constexpr int everySo = 12;
constexpr std::int64_t smallBytes = 700'000;
constexpr double shortSeconds = 12;
constexpr int smallPixels = 1280 * 720;

bool isCandidate(const CorpusFile& file) {
    std::string extension(pathExtension(file.name));
    const bool isRefused = Converter::unsupportedExtensions().contains(extension);
    return !isRefused && file.bytes <= smallBytes && file.seconds.value_or(0) <= shortSeconds &&
           file.width * file.height <= smallPixels;
}

/// Picks files in the order of the corpus.
class Picker {
public:
    bool takes(const CorpusFile& file) {
        if (!isCandidate(file))
            return false;
        bool isWanted = !hasRealCorpus() || m_seen++ % everySo == 0;
        for (const char* trait : traits)
            isWanted = isWanted || (file.tags.contains(trait) && m_taken[trait] < perTrait);
        for (const char* trait : traits)
            m_taken[trait] += isWanted && file.tags.contains(trait) ? 1 : 0;
        return isWanted;
    }

private:
    std::map<std::string_view, int> m_taken;
    int m_seen = 0;
};

std::vector<CorpusFile> chosen(std::vector<CorpusFile> files) {
    Picker picker;
    std::erase_if(files, [&](const CorpusFile& file) { return !picker.takes(file); });
    return files;
}

/// Outputs that rightly differ from what the source says of itself.
struct Known {
    std::string_view file;
    std::string_view what;
    std::string_view reason;
};

constexpr std::array known{
    Known{"ExoPlayer/sample_ait.ts", "duration",
          "the stream's length is estimated from its time stamps, without the last packets"},
    Known{"atldotnet/0.5.mp4", "duration",
          "the header counts the encoder's delay, which the gapless tag cuts off"},
    Known{"atldotnet/1.5.mp4", "duration", "the same"},
    Known{"fate-suite/tones_nero_16000_stereo_aac_he.m4a", "duration", "the same"},
    Known{"fate-suite/tones_nero_44100_mono_aac_he.m4a", "duration", "the same"},
};

/// Files that can be opened and not be converted.
struct Hopeless {
    std::string_view file;
    std::string_view sentence;
    std::string_view reason;
};

constexpr std::string_view endsEarly = "The file is damaged: it ends before its stated length.";
constexpr std::string_view cannotDecode = "The media can't be decoded. It may be damaged.";
constexpr std::string_view noDecoder = "The media can't be decoded on this computer.";

constexpr std::array hopeless{
    Hopeless{"atldotnet/aiff.aiff", endsEarly, "a header without the sound"},
    Hopeless{"exiftool/QuickTime.mov", endsEarly, "an index without the samples"},
    Hopeless{"flac-test-files/03 - wrong bit depth.flac", cannotDecode, "broken on purpose"},
    Hopeless{"lofty-rs/2_IDX_34_RAND_128635499166458268533001.wav", noDecoder,
             "a header of random bytes"},
    Hopeless{"media/sample_mhm1_lcbl_cicp1.mp4", noDecoder, "MPEG-H sound"},
    Hopeless{"tsduck-test/test-018.ts", cannotDecode, "tables alone, no packet of media"},
    Hopeless{"tsduck-test/test-020.ts", cannotDecode, "the same"},
};

bool isKnown(const CorpusFile& file, const Difference& difference) {
    return std::ranges::any_of(known, [&](const Known& row) {
        return row.file == file.name && row.what == difference.what;
    });
}

bool isHopeless(const CorpusFile& file, const std::string& sentence) {
    return std::ranges::any_of(hopeless, [&](const Hopeless& row) {
        return row.file == file.name && row.sentence == sentence;
    });
}

} // namespace

/// A target and the number of the part.
struct Share {
    Target target;
    int part;
};

/// What the list of tests shows.
void PrintTo(const Share& share, std::ostream* out) {
    *out << rawValue(share.target) << ' ' << share.part;
}

std::vector<Share> shares() {
    std::vector<Share> all;
    for (const Target target : allTargets)
        for (int part = 1; part <= parts; ++part)
            all.push_back({target, part});
    return all;
}

/// Each target's share of the files is split, so that the parts run side by side.
class Sweep : public testing::TestWithParam<Share> {
protected:
    Target target() const { return GetParam().target; }
    bool isMine(std::size_t index) const {
        return static_cast<int>(index) % parts == GetParam().part - 1;
    }
    void convertFile(const CorpusFile& file);
    void checkConversion(const CorpusFile& file, const ConversionRequest& request);
    void checkOutput(const CorpusFile& file, const ConversionRequest& request,
                     const Conversion& done) const;

    TempFolder m_folder;
    int m_refused = 0;
    int m_blocked = 0;
    int m_copied = 0;
    int m_encoded = 0;
    int m_failed = 0;
};

void Sweep::convertFile(const CorpusFile& file) {
    const Analysis analysis = analyze(file.path);
    if (!analysis.info) {
        ++m_refused;
    } else if (blocker(*analysis.info, target())) {
        ++m_blocked;
    } else {
        const TempFolder folder;
        const auto name = outputName(file.path.filename().native(), target(),
                                     [](const std::string&) { return false; });
        checkConversion(file, {.source = file.path,
                               .info = *analysis.info,
                               .target = target(),
                               .output = folder.path() / name});
    }
}

void Sweep::checkConversion(const CorpusFile& file, const ConversionRequest& request) {
    const Conversion done = convert(request);
    EXPECT_FALSE(done.wasTooSlow) << file.name << " takes too long";
    const auto names = namesIn(request.output.parent_path());
    if (done.mode) {
        ++(*done.mode == Mode::boxlift ? m_copied : m_encoded);
        EXPECT_EQ(names, std::vector{request.output.filename().native()}) << file.name;
        checkOutput(file, request, done);
    } else {
        ++m_failed;
        EXPECT_TRUE(isHopeless(file, done.sentence)) << file.name << ": " << done.sentence;
        EXPECT_TRUE(names.empty()) << file.name << " leaves " << names.front();
    }
}

void Sweep::checkOutput(const CorpusFile& file, const ConversionRequest& request,
                        const Conversion& done) const {
    const Plan plan =
        Converter::plan(request.info, request.target, request.size, request.removeAudio);
    auto differences = compareWithSource(request, *done.mode);
    for (const Difference& difference :
         checkProgress(done.progress, plan.mode == *done.mode ? 1 : 2))
        differences.push_back(difference);
    for (const Difference& difference : differences)
        if (!isKnown(file, difference))
            ADD_FAILURE() << file.name << (*done.mode == Mode::boxlift ? ", copied" : ", encoded")
                          << ": " << difference.what << ": " << difference.text;
}

TEST_P(Sweep, OutputsHoldWhatTheirSourcesHold) {
    const auto start = std::chrono::steady_clock::now();
    const auto files = chosen(corpusFiles(m_folder.path()));
    EXPECT_FALSE(files.empty());
    for (std::size_t index = 0; index < files.size(); ++index)
        if (isMine(index))
            convertFile(files[index]);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    std::cout << "of " << files.size() << " files this part has " << m_refused << " refused, "
              << m_blocked << " not for this target, " << m_copied << " copied, " << m_encoded
              << " encoded, " << m_failed << " failed, in " << taken.count() << " s\n";
}

INSTANTIATE_TEST_SUITE_P(Corpus, Sweep, testing::ValuesIn(shares()),
                         [](const testing::TestParamInfo<Share>& info) {
                             return std::string(rawValue(info.param.target)) + "Part" +
                                    std::to_string(info.param.part);
                         });

} // namespace boxlift::test
