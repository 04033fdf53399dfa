#include <iostream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "input/conversion_runner.h"
#include "input/engine_under_test.h"
#include "support/corpus.h"
#include "support/temp_folder.h"

namespace boxlift::test {

namespace fs = std::filesystem;

namespace {

/// What an analysis says, in words that can be compared; numbers to the last bit.
std::string outcomeOf(const Engine& engine, const fs::path& path) {
    try {
        const MediaInfo info = engine.analyze(path, {});
        std::ostringstream text;
        text << info.summary() << ' ' << info.videoCodec.value_or(0) << ' '
             << info.audioCodec.value_or(0) << ' ' << std::hexfloat << info.duration;
        return text.str();
    } catch (const std::exception& error) {
        return error.what();
    }
}

/// What a conversion comes to: the mode and the bytes, or the sentence.
std::string outcomeOf(const Engine& engine, const ConversionRequest& request) {
    try {
        const Mode mode = engine.convert(request.source, request.info, request.target, request.size,
                                         request.removeAudio, request.output, [](double) {}, {});
        return (mode == Mode::boxlift ? "copied " : "encoded ") + readFile(request.output);
    } catch (const std::exception& error) {
        return error.what();
    }
}

/// Files that are copied or refused within a moment; every so many of them.
bool isQuick(const CorpusFile& file, const ConversionRequest& request) {
    const Plan plan = Converter::plan(request.info, request.target, request.size, false);
    return file.bytes <= 2'000'000 && plan.mode == Mode::boxlift;
}

} // namespace

TEST(WorkerCorpus, EveryFileIsDescribedAsInOneProcess) {
    const TempFolder folder;
    const Engine here = converterEngine();
    const Engine there = engineUnderTest();
    for (const CorpusFile& file : corpusFiles(folder.path()))
        EXPECT_EQ(outcomeOf(there, file.path), outcomeOf(here, file.path)) << file.name;
}

TEST(WorkerCorpus, FilesAreCopiedAsInOneProcess) {
    constexpr int everySo = 8;
    const TempFolder folder;
    const Engine here = converterEngine();
    const Engine there = engineUnderTest();
    int seen = 0;
    int converted = 0;
    for (const CorpusFile& file : corpusFiles(folder.path())) {
        ConversionRequest request{.source = file.path, .target = Target::mov};
        try {
            request.info = here.analyze(file.path, {});
        } catch (const ConvertError&) {
            continue;
        }
        if (!isQuick(file, request) || (hasRealCorpus() && seen++ % everySo != 0))
            continue;
        request.output = folder.path() / "out";
        const std::string expected = outcomeOf(here, request);
        EXPECT_TRUE(outcomeOf(there, request) == expected) << file.name;
        ++converted;
    }
    std::cout << converted << " files were converted\n";
    EXPECT_GT(converted, 0);
}

} // namespace boxlift::test
