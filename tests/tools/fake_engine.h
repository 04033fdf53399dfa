#pragma once

#include <condition_variable>
#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "drive/event_writer.h"
#include "queue/engine.h"

namespace boxlift::drive::test {

/// H.264 and AAC, 1920x1080, 12.5 s.
MediaInfo filmInfo();
/// AAC alone, 3 s.
MediaInfo soundInfo();
/// H.264 without sound, 2 s.
MediaInfo silentInfo();

/// Waits until a stop is requested, at most 10 s, then throws Cancelled as the engine does.
[[noreturn]] void waitForStop(const std::stop_token& stop);

/// One call of `convert`, without what it shares with others.
struct ConvertCall {
    std::filesystem::path url;
    MediaInfo info;
    Target target;
    SizeOption size;
    bool removeAudio;
    std::filesystem::path output;

    friend bool operator==(const ConvertCall&, const ConvertCall&) = default;
};

/// An engine whose analyses and conversions do as told. What is not told: every file is a film,
/// every conversion reports 0.0 and 1.0, makes its output and copies.
class FakeEngine {
public:
    using Analysis = std::function<MediaInfo(const std::stop_token& stop)>;
    using Conversion = std::function<Mode(
        const ConvertCall& call, const Converter::Progress& progress, const std::stop_token& stop)>;

    // Before the engine is used.
    void analyzes(const std::filesystem::path& url, Analysis analysis);
    void converts(const std::filesystem::path& url, Conversion conversion);
    Engine engine();

    // Any thread.
    std::vector<ConvertCall> calls() const;

private:
    mutable std::mutex m_mutex;
    std::map<std::filesystem::path, Analysis> m_analyses;
    std::map<std::filesystem::path, Conversion> m_conversions;
    std::vector<ConvertCall> m_calls;
};

/// What a conversion does that is not told otherwise.
Mode copyAtOnce(const ConvertCall& call, const Converter::Progress& progress,
                const std::stop_token& stop);

/// Keeps the lines that are written. Any thread.
class Lines {
public:
    LineSink sink();
    /// Without their line ends.
    std::vector<std::string> all() const;
    /// Those in which `text` occurs.
    std::vector<std::string> with(std::string_view text) const;
    /// Waits until `text` occurs in a line, at most 10 s; false when it does not.
    bool waitFor(std::string_view text) const;

private:
    bool hasLocked(std::string_view text) const;

    mutable std::mutex m_mutex;
    mutable std::condition_variable m_added;
    std::vector<std::string> m_lines;
};

} // namespace boxlift::drive::test
