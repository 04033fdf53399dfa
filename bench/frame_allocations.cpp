// Whether re-encoding takes the memory of its pictures from pools.
//
// usage: frame_allocations FOLDER FILE...
//
// Encodes each file anew in 720 and 1080 lines, in this process, into FOLDER, and tells how many
// allocations of a picture's size that took. With pools it is no more for a longer film.

#include <array>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <span>
#include <stdexcept>

#include "bench/large_allocations.h"
#include "engine/converter.h"

namespace {

using boxlift::Converter::analyze;
using boxlift::Converter::convert;

std::size_t allocationsOf(const std::filesystem::path& film, boxlift::SizeOption size,
                          const std::filesystem::path& output) {
    const boxlift::MediaInfo info = analyze(film);
    const std::size_t before = boxlift::bench::largeAllocations();
    const auto mode = convert(film, info, boxlift::Target::mp4, size, false, output, [](double) {});
    if (mode != boxlift::Mode::reencode)
        throw std::runtime_error(film.string() + " was copied");
    return boxlift::bench::largeAllocations() - before;
}

void tellAll(const std::filesystem::path& folder, std::span<char*> films) {
    using boxlift::SizeOption;
    constexpr std::array sizes{SizeOption::p720, SizeOption::p1080};
    for (const char* film : films) {
        std::cout << std::filesystem::path(film).filename().string() << ':';
        for (const SizeOption size : sizes)
            std::cout << ' ' << allocationsOf(film, size, folder / "frames.mp4");
        std::cout << std::endl;
    }
}

} // namespace

int main(int argc, char** argv) {
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    if (arguments.size() < 3) {
        std::cerr << "usage: frame_allocations FOLDER FILE...\n";
        return EXIT_FAILURE;
    }
    try {
        tellAll(arguments[1], arguments.subspan(2));
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::cerr << "frame_allocations: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
