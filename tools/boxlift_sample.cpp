#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <optional>

#include "support/media_generator.h"

namespace {

constexpr int usageError = 2;

boxlift::test::MediaSpec sampleClip(double seconds) {
    return {.format = "mov",
            .seconds = seconds,
            .video = {{.width = 1280,
                       .height = 720,
                       .bFrames = 2,
                       .keyFrameInterval = 50,
                       .colour = {.primaries = "bt709",
                                  .transfer = "bt709",
                                  .matrix = "bt709",
                                  .range = "tv"},
                       .encoderOptions = {{"preset", "superfast"}, {"threads", "auto"}}}},
            .audio = {{.sampleRate = 48000, .frequencies = {440, 554.37}, .amplitude = 0.25}},
            .metadata = {{"title", "Boxlift sample"}}};
}

/// A sound alone.
boxlift::test::MediaSpec sampleSound(double seconds) {
    return {.format = "wav",
            .seconds = seconds,
            .audio = {{.codec = "pcm_s16le",
                       .sampleRate = 44100,
                       .frequencies = {440, 554.37},
                       .amplitude = 0.25}}};
}

/// What the command line asks for; 5 s unless it says otherwise. Nothing when it is wrong.
std::optional<double> duration(int argumentCount, char** arguments) {
    if (argumentCount == 2)
        return 5;
    const double seconds = argumentCount == 3 ? std::atof(arguments[2]) : 0;
    return seconds >= 1 && seconds <= 3600 ? std::optional(seconds) : std::nullopt;
}

} // namespace

/// Makes a clip, or a sound where the name ends in .wav, to try Boxlift with.
int main(int argumentCount, char** arguments) {
    const auto seconds = duration(argumentCount, arguments);
    if (!seconds || *arguments[1] == '\0') {
        std::cerr << "usage: boxlift-sample OUTPUT.mov|OUTPUT.wav [SECONDS]\n";
        return usageError;
    }
    try {
        const std::filesystem::path output(arguments[1]);
        const bool isSound = output.extension() == ".wav";
        boxlift::test::makeMedia(output, isSound ? sampleSound(*seconds) : sampleClip(*seconds));
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::cerr << "boxlift-sample: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
