#include "tools/fake_engine.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "support/temp_folder.h"

namespace boxlift::drive::test {

namespace fs = std::filesystem;

constexpr std::chrono::seconds patience{10};

MediaInfo filmInfo() {
    return {.hasVideo = true,
            .hasAudio = true,
            .videoCodec = fourCharCode("avc1"),
            .audioCodec = fourCharCode("aac "),
            .width = 1920,
            .height = 1080,
            .duration = 12.5};
}

MediaInfo soundInfo() {
    MediaInfo info;
    info.hasAudio = true;
    info.audioCodec = fourCharCode("aac ");
    info.duration = 3;
    return info;
}

MediaInfo silentInfo() {
    MediaInfo info = filmInfo();
    info.hasAudio = false;
    info.audioCodec.reset();
    info.duration = 2;
    return info;
}

void waitForStop(const std::stop_token& stop) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!stop.stop_requested() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    throw Cancelled();
}

Mode copyAtOnce(const ConvertCall& call, const Converter::Progress& progress,
                const std::stop_token&) {
    progress(0.0);
    boxlift::test::writeFile(call.output, "converted");
    progress(1.0);
    return Mode::boxlift;
}

void FakeEngine::analyzes(const fs::path& url, Analysis analysis) {
    m_analyses[url] = std::move(analysis);
}

void FakeEngine::converts(const fs::path& url, Conversion conversion) {
    m_conversions[url] = std::move(conversion);
}

Engine FakeEngine::engine() {
    return {.analyze =
                [this](const fs::path& url, std::stop_token stop) {
                    const auto told = m_analyses.find(url);
                    return told == m_analyses.end() ? filmInfo() : told->second(stop);
                },
            .convert =
                [this](const fs::path& url, const MediaInfo& info, Target target, SizeOption size,
                       bool removeAudio, const fs::path& output,
                       const Converter::Progress& progress, std::stop_token stop) {
                    const ConvertCall call{url, info, target, size, removeAudio, output};
                    {
                        const std::scoped_lock lock(m_mutex);
                        m_calls.push_back(call);
                    }
                    const auto told = m_conversions.find(url);
                    return told == m_conversions.end() ? copyAtOnce(call, progress, stop)
                                                       : told->second(call, progress, stop);
                }};
}

std::vector<ConvertCall> FakeEngine::calls() const {
    const std::scoped_lock lock(m_mutex);
    return m_calls;
}

LineSink Lines::sink() {
    return [this](std::string_view line) {
        const std::scoped_lock lock(m_mutex);
        m_lines.emplace_back(line.substr(0, line.find('\n')));
        m_added.notify_all();
        return true;
    };
}

std::vector<std::string> Lines::all() const {
    const std::scoped_lock lock(m_mutex);
    return m_lines;
}

std::vector<std::string> Lines::with(std::string_view text) const {
    std::vector<std::string> result = all();
    std::erase_if(result,
                  [&](const std::string& line) { return line.find(text) == std::string::npos; });
    return result;
}

bool Lines::waitFor(std::string_view text) const {
    std::unique_lock lock(m_mutex);
    return m_added.wait_for(lock, patience, [&] { return hasLocked(text); });
}

bool Lines::hasLocked(std::string_view text) const {
    return std::ranges::any_of(
        m_lines, [&](const std::string& line) { return line.find(text) != std::string::npos; });
}

} // namespace boxlift::drive::test
