#include <cstdlib>
#include <exception>
#include <iostream>

#include "support/media_generator.h"

namespace {

constexpr int usageError = 2;

boxlift::test::MediaSpec sampleClip() {
    return {.format = "mov",
            .seconds = 5,
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

} // namespace

/// Makes a clip to try Boxlift with.
int main(int argumentCount, char** arguments) {
    if (argumentCount != 2 || *arguments[1] == '\0') {
        std::cerr << "usage: boxlift-sample OUTPUT.mov\n";
        return usageError;
    }
    try {
        boxlift::test::makeMedia(arguments[1], sampleClip());
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::cerr << "boxlift-sample: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
