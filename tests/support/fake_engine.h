#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <mutex>
#include <stop_token>
#include <vector>

#include "queue/engine.h"
#include "support/media_infos.h"

namespace boxlift::test {

/// One call of `convert`, without what it shares with others.
struct ConvertCall {
    std::filesystem::path url;
    MediaInfo info;
    Target target = Target::mp4;
    SizeOption size = SizeOption::original;
    bool removeAudio = false;
    std::filesystem::path output;

    friend bool operator==(const ConvertCall&, const ConvertCall&) = default;
};

/// An engine whose analyses and conversions do as told, on the threads that they are called on.
/// What is not told: every file is a film, every conversion is `copyAtOnce` or what
/// `convertsOtherwise` says. Any thread.
class FakeEngine {
public:
    using Analysis = std::function<MediaInfo(const std::stop_token& stop)>;
    using Conversion = std::function<Mode(
        const ConvertCall& call, const Converter::Progress& progress, const std::stop_token& stop)>;

    void analyzes(const std::filesystem::path& url, Analysis analysis);
    void converts(const std::filesystem::path& url, Conversion conversion);
    /// What every conversion does that is not told by itself.
    void convertsOtherwise(Conversion conversion);
    /// Refers to this object.
    Engine engine();

    /// In the order in which they began.
    std::vector<std::filesystem::path> analyses() const;
    std::vector<ConvertCall> conversions() const;
    /// The files of `conversions`.
    std::vector<std::filesystem::path> converted() const;

private:
    MediaInfo analyze(const std::filesystem::path& url, const std::stop_token& stop);
    Mode convert(const ConvertCall& call, const Converter::Progress& progress,
                 const std::stop_token& stop);

    mutable std::mutex m_mutex;
    std::map<std::filesystem::path, Analysis> m_analyses;
    std::map<std::filesystem::path, Conversion> m_conversions;
    Conversion m_otherConversion;
    std::vector<std::filesystem::path> m_analysisCalls;
    std::vector<ConvertCall> m_conversionCalls;
};

/// Reports 1.0, makes the output and says that it copied.
Mode copyAtOnce(const ConvertCall& call, const Converter::Progress& progress,
                const std::stop_token& stop);

} // namespace boxlift::test
