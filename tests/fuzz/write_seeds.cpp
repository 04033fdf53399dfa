#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>

#include "fuzz/seeds.h"
#include "support/temp_folder.h"

/// usage: boxlift_fuzz_seeds FOLDER
///
/// Writes small files of every kind that is read: what a fuzzer begins with.
int main(int count, char** arguments) {
    if (count != 2) {
        std::cerr << "usage: boxlift_fuzz_seeds FOLDER\n";
        return EXIT_FAILURE;
    }
    using namespace boxlift::test;
    try {
        int number = 0;
        for (const SeedKind& kind : seedKinds())
            for (const Seed& seed : seedsOf(kind))
                writeFile(std::filesystem::path(arguments[1]) /
                              (kind.name + std::to_string(++number)),
                          seed.bytes);
        std::cout << number << " seeds\n";
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
