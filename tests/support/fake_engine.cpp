#include "support/fake_engine.h"

#include <utility>

#include "support/temp_folder.h"

namespace boxlift::test {

namespace fs = std::filesystem;

void FakeEngine::analyzes(const fs::path& url, Analysis analysis) {
    const std::scoped_lock lock(m_mutex);
    m_analyses[url] = std::move(analysis);
}

void FakeEngine::converts(const fs::path& url, Conversion conversion) {
    const std::scoped_lock lock(m_mutex);
    m_conversions[url] = std::move(conversion);
}

void FakeEngine::convertsOtherwise(Conversion conversion) {
    const std::scoped_lock lock(m_mutex);
    m_otherConversion = std::move(conversion);
}

Engine FakeEngine::engine() {
    return {
        .analyze = [this](const fs::path& url, std::stop_token stop) { return analyze(url, stop); },
        .convert =
            [this](const fs::path& url, const MediaInfo& info, Target target, SizeOption size,
                   bool removeAudio, const fs::path& output, const Converter::Progress& progress,
                   std::stop_token stop) {
                return convert({url, info, target, size, removeAudio, output}, progress, stop);
            },
    };
}

MediaInfo FakeEngine::analyze(const fs::path& url, const std::stop_token& stop) {
    Analysis told;
    {
        const std::scoped_lock lock(m_mutex);
        m_analysisCalls.push_back(url);
        if (const auto found = m_analyses.find(url); found != m_analyses.end())
            told = found->second;
    }
    return told ? told(stop) : filmInfo();
}

Mode FakeEngine::convert(const ConvertCall& call, const Converter::Progress& progress,
                         const std::stop_token& stop) {
    Conversion told;
    {
        const std::scoped_lock lock(m_mutex);
        told = m_otherConversion;
        m_conversionCalls.push_back(call);
        if (const auto found = m_conversions.find(call.url); found != m_conversions.end())
            told = found->second;
    }
    return told ? told(call, progress, stop) : copyAtOnce(call, progress, stop);
}

std::vector<fs::path> FakeEngine::analyses() const {
    const std::scoped_lock lock(m_mutex);
    return m_analysisCalls;
}

std::vector<ConvertCall> FakeEngine::conversions() const {
    const std::scoped_lock lock(m_mutex);
    return m_conversionCalls;
}

std::vector<fs::path> FakeEngine::converted() const {
    std::vector<fs::path> urls;
    for (const ConvertCall& call : conversions())
        urls.push_back(call.url);
    return urls;
}

Mode copyAtOnce(const ConvertCall& call, const Converter::Progress& progress,
                const std::stop_token&) {
    writeFile(call.output, "converted");
    progress(1.0);
    return Mode::boxlift;
}

} // namespace boxlift::test
