#include <exception>
#include <filesystem>
#include <iostream>
#include <string_view>
#include <system_error>
#include <vector>

#include "drive/command_line.h"
#include "drive/drive.h"
#include "drive/standard_streams.h"
#include "drive/stop_on_signals.h"

namespace {

using namespace boxlift::drive;

CommandLine readCommandLine(int argc, char** argv) {
    const std::vector<std::string_view> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
    std::error_code error;
    return parseCommandLine(arguments, std::filesystem::current_path(error));
}

int run(int argc, char** argv) {
    const CommandLine commandLine = readCommandLine(argc, argv);
    const StopOnSignals signals;
    return static_cast<int>(
        drive(commandLine, converterEngine(), writeToStandardOutput, signals.token()));
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
