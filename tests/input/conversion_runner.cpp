#include "input/conversion_runner.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "input/engine_under_test.h"

namespace boxlift::test {

namespace fs = std::filesystem;

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

/// Asks for a stop when the time is up or somebody else asks for one.
class Watch {
public:
    Watch(std::stop_token outer, std::chrono::seconds limit)
        : m_relay(std::move(outer), Relay{m_stop}),
          m_thread([this, limit](const std::stop_token& done) { wait(done, limit); }) {}

    std::stop_token token() const { return m_stop.get_token(); }
    /// Once it has been called, the time can no longer be up.
    bool finish() {
        m_thread.request_stop();
        m_thread.join();
        return m_isUp;
    }

private:
    struct Relay {
        std::stop_source stop;
        void operator()() { stop.request_stop(); }
    };

    void wait(const std::stop_token& done, std::chrono::seconds limit) {
        std::mutex mutex;
        std::condition_variable_any never;
        std::unique_lock lock(mutex);
        never.wait_for(lock, done, limit, [] { return false; });
        if (done.stop_requested())
            return;
        m_isUp = true;
        m_stop.request_stop();
    }

    std::stop_source m_stop;
    std::stop_callback<Relay> m_relay;
    bool m_isUp = false;
    std::jthread m_thread;
};

class ProgressLog {
public:
    explicit ProgressLog(const Converter::Progress& also) : m_also(also) {}

    void add(double fraction) {
        const std::lock_guard lock(m_mutex);
        m_fractions.push_back(fraction);
        if (m_also)
            m_also(fraction);
    }
    std::vector<double> take() {
        const std::lock_guard lock(m_mutex);
        return std::move(m_fractions);
    }

private:
    const Converter::Progress& m_also;
    std::mutex m_mutex;
    std::vector<double> m_fractions;
};

} // namespace

Analysis analyze(const fs::path& path) {
    Analysis analysis;
    const auto start = Clock::now();
    try {
        analysis.info = engineUnderTest().analyze(path, {});
    } catch (const ConvertError& error) {
        analysis.sentence = error.message();
    }
    analysis.seconds = secondsSince(start);
    return analysis;
}

ConversionRequest requestFor(const fs::path& source, Target target, const fs::path& output) {
    return {
        .source = source, .info = Converter::analyze(source), .target = target, .output = output};
}

Conversion convert(const ConversionRequest& request, std::stop_token stop,
                   std::chrono::seconds limit, const Converter::Progress& alsoReport) {
    Conversion conversion;
    ProgressLog log(alsoReport);
    Watch watch(std::move(stop), limit);
    const auto start = Clock::now();
    try {
        conversion.mode = engineUnderTest().convert(
            request.source, request.info, request.target, request.size, request.removeAudio,
            request.output, [&](double fraction) { log.add(fraction); }, watch.token());
    } catch (const Cancelled&) {
        conversion.wasCancelled = true;
    } catch (const std::exception& error) {
        conversion.sentence = error.what();
    }
    conversion.seconds = secondsSince(start);
    conversion.wasTooSlow = watch.finish();
    conversion.progress = log.take();
    return conversion;
}

std::vector<std::string> namesIn(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().native());
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace boxlift::test
