#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>

#include "fidelity/report.h"
#include "fidelity/sweep.h"
#include "support/corpus.h"
#include "support/temp_folder.h"

namespace {

constexpr int usageError = 2;

} // namespace

/// Converts the files of the folder that BOXLIFT_CORPUS names in every way and writes down what was
/// kept.
int main(int argumentCount, char** arguments) {
    if (argumentCount != 2 || !boxlift::test::hasRealCorpus()) {
        std::cerr << "usage: BOXLIFT_CORPUS=FOLDER boxlift-fidelity OUTPUT.md\n";
        return usageError;
    }
    try {
        const boxlift::test::TempFolder scratch;
        const auto files = boxlift::test::corpusFiles(scratch.path());
        const auto reports = boxlift::fidelity::sweep(files, scratch.path());
        std::ofstream out(arguments[1]);
        boxlift::fidelity::writeReport(out, reports);
        return out.flush() ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::cerr << "boxlift-fidelity: " << error.what() << '\n';
        return EXIT_FAILURE;
    }
}
