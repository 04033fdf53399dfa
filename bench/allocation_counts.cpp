// What conversions ask of the allocator.
//
// usage: allocation_counts FOLDER FILE...
//
// Converts each file in this process, into FOLDER: copied, and encoded anew in 720 and 1080 lines.
// Tells how many allocations copying took, and how many of a picture's size each encoding. Where
// pictures come from pools those are no more for a longer film.

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <span>
#include <stdexcept>

#include "bench/allocations.h"
#include "engine/converter.h"

namespace {

using boxlift::Converter::analyze;
using boxlift::Converter::convert;

using boxlift::Mode;
using boxlift::SizeOption;
using boxlift::bench::Allocations;
using boxlift::bench::allocations;

Allocations allocationsOf(const std::filesystem::path& film, SizeOption size, Mode expected,
                          const std::filesystem::path& output) {
    const boxlift::MediaInfo info = analyze(film);
    const Allocations before = allocations();
    const auto mode = convert(film, info, boxlift::Target::mp4, size, false, output, [](double) {});
    if (mode != expected)
        throw std::runtime_error(film.string() + " was not converted in the way that is measured");
    const Allocations after = allocations();
    return {after.all - before.all, after.large - before.large};
}

void tell(const std::filesystem::path& film, const std::filesystem::path& output) {
    const auto copied = allocationsOf(film, SizeOption::original, Mode::boxlift, output);
    const auto small = allocationsOf(film, SizeOption::p720, Mode::reencode, output);
    const auto large = allocationsOf(film, SizeOption::p1080, Mode::reencode, output);
    std::cout << film.filename().string() << ": " << copied.all << " to copy; of a picture's size "
              << small.large << " to encode 720 lines, " << large.large << " to encode 1080"
              << std::endl;
}

} // namespace

int main(int argc, char** argv) {
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    if (arguments.size() < 3) {
        std::cerr << "usage: allocation_counts FOLDER FILE...\n";
        return EXIT_FAILURE;
    }
    try {
        for (const char* film : arguments.subspan(2))
            tell(film, std::filesystem::path(arguments[1]) / "film.mp4");
        return EXIT_SUCCESS;
    } catch (const std::exception& error) {
        std::cerr << "allocation_counts: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
