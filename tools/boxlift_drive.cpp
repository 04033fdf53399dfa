#include <exception>
#include <filesystem>
#include <iostream>
#include <string_view>
#include <system_error>
#include <vector>

#include <QCoreApplication>

#include "drive/command_line.h"
#include "drive/drive.h"
#include "drive/standard_streams.h"
#include "drive/stop_on_signals.h"
#include "queue/worker_engine.h"
#include "queue/worker_program.h"

namespace {

using namespace boxlift::drive;

CommandLine readCommandLine(int argc, char** argv) {
    const std::vector<std::string_view> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    std::error_code error;
    return parseCommandLine(arguments, std::filesystem::current_path(error));
}

int run(int argc, char** argv) {
    const CommandLine commandLine = readCommandLine(argc, argv);
    // Qt takes over the user's locale, and with it how C functions write and read numbers.
    qputenv("LC_ALL", "C.UTF-8");
    const StopOnSignals stopSignals;
    const QCoreApplication application(argc, argv);
    const boxlift::Engine engine = boxlift::workerEngine({.program = boxlift::workerProgram()});
    engine.prepare();
    return static_cast<int>(drive(commandLine, engine, writeToStandardOutput, stopSignals.token()));
}

} // namespace

int main(int argc, char** argv) {
    prepareStandardStreams();
    try {
        return run(argc, argv);
    } catch (const UsageError& error) {
        std::cerr << "boxlift-drive: " << error.what() << '\n' << usageLine << '\n';
        return static_cast<int>(ExitStatus::wrongUsage);
    } catch (const std::exception& error) {
        std::cerr << "boxlift-drive: " << error.what() << '\n';
        return static_cast<int>(ExitStatus::someFailed);
    }
}
