#include "drive/command_line.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "drive/absolute_path.h"

namespace boxlift::drive {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(std::string_view complaint, std::string_view word) {
    throw UsageError(std::string(complaint) + " '" + std::string(word) + "'");
}

template <typename Value>
Value known(std::optional<Value> value, std::string_view text) {
    if (!value)
        fail("unknown value", text);
    return *value;
}

fs::path pathFrom(std::string_view text, const fs::path& currentFolder) {
    if (text.empty())
        throw UsageError("an empty path");
    const fs::path path(text);
    if (path.is_relative() && currentFolder.empty())
        fail("there is no current folder for", text);
    return absolutePath(path, currentFolder);
}

/// One option of `convert`.
struct Option {
    std::string_view name;
    bool takesValue;
    void (*apply)(CommandLine& line, std::string_view value, const fs::path& currentFolder);
};

void applyTarget(CommandLine& line, std::string_view value, const fs::path&) {
    line.target = known(targetFromRawValue(value), value);
}

void applySize(CommandLine& line, std::string_view value, const fs::path&) {
    line.size = known(sizeOptionFromRawValue(value), value);
}

void applyRemoveAudio(CommandLine& line, std::string_view, const fs::path&) {
    line.removeAudio = true;
}

void applyOutputDir(CommandLine& line, std::string_view value, const fs::path& currentFolder) {
    line.outputDir = pathFrom(value, currentFolder);
}

constexpr auto convertOptions = std::to_array<Option>({
    {"--target", true, applyTarget},
    {"--size", true, applySize},
    {"--remove-audio", false, applyRemoveAudio},
    {"--output-dir", true, applyOutputDir},
});

std::span<const Option> optionsOf(Command command) {
    return command == Command::convert ? std::span<const Option>(convertOptions)
                                       : std::span<const Option>();
}

Command commandNamed(std::string_view name) {
    if (name == "analyze")
        return Command::analyze;
    if (name == "convert")
        return Command::convert;
    fail("unknown command", name);
}

/// Goes through the arguments behind the command once, from left to right.
class Parser {
public:
    Parser(Command command, std::span<const std::string_view> arguments,
           const fs::path& currentFolder)
        : m_rest(arguments), m_currentFolder(currentFolder) {
        m_line.command = command;
    }

    CommandLine parse() {
        while (!m_rest.empty())
            takeArgument(next());
        if (m_line.command == Command::convert && m_line.outputDir.empty())
            throw UsageError("--output-dir is missing");
        if (m_line.paths.empty())
            throw UsageError("no paths");
        return m_line;
    }

private:
    std::string_view next() {
        const std::string_view argument = m_rest.front();
        m_rest = m_rest.subspan(1);
        return argument;
    }

    void takeArgument(std::string_view argument) {
        if (m_optionsEnded || !argument.starts_with('-'))
            m_line.paths.push_back(pathFrom(argument, m_currentFolder));
        else if (argument == "--")
            m_optionsEnded = true;
        else if (!m_line.paths.empty())
            fail("options stand before the paths, not", argument);
        else
            takeOption(argument);
    }

    void takeOption(std::string_view argument) {
        const std::size_t equals = argument.find('=');
        const std::string_view name = argument.substr(0, equals);
        const auto options = optionsOf(m_line.command);
        const auto option = std::ranges::find(options, name, &Option::name);
        if (option == options.end())
            fail("unknown option", name);
        if (equals != std::string_view::npos && !option->takesValue)
            fail("no value belongs to", name);
        const std::string_view value =
            equals != std::string_view::npos ? argument.substr(equals + 1) : separateValue(*option);
        option->apply(m_line, value, m_currentFolder);
    }

    std::string_view separateValue(const Option& option) {
        if (!option.takesValue)
            return {};
        if (m_rest.empty())
            fail("a value is missing after", option.name);
        return next();
    }

    CommandLine m_line;
    std::span<const std::string_view> m_rest;
    const fs::path& m_currentFolder;
    bool m_optionsEnded = false;
};

} // namespace

CommandLine parseCommandLine(std::span<const std::string_view> arguments,
                             const fs::path& currentFolder) {
    if (arguments.empty())
        throw UsageError("no command");
    return Parser(commandNamed(arguments.front()), arguments.subspan(1), currentFolder).parse();
}

} // namespace boxlift::drive
