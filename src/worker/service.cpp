#include "worker/service.h"

#include <chrono>
#include <mutex>
#include <utility>

#include "engine/converter.h"
#include "worker/handed_files.h"
#include "worker/protocol/message.h"
#include "worker/wait.h"

namespace boxlift::worker {

namespace {

using std::chrono_literals::operator""ms;

/// Sends reports; any thread.
class Reporter {
public:
    explicit Reporter(Channel& channel) : m_channel(channel) {}

    void report(const Report& report) {
        const std::lock_guard lock(m_mutex);
        send(report);
    }

    /// Only so often: a person looks at it. The end is the answer's to tell.
    void reportProgress(double fraction) {
        const std::lock_guard lock(m_mutex);
        const auto now = std::chrono::steady_clock::now();
        if (fraction >= 1.0 || now < m_nextProgress)
            return;
        m_nextProgress = now + 20ms;
        send(Progress{std::max(0.0, fraction)});
    }

private:
    void send(const Report& report) { m_channel.send(encode(report), {}, unlimited); }

    /// For as long as the other side lives it may read.
    static constexpr std::chrono::milliseconds unlimited{-1};

    Channel& m_channel;
    std::mutex m_mutex;
    std::chrono::steady_clock::time_point m_nextProgress;
};

/// What an operation returns, or what it throws.
template <typename Operation>
Report outcome(Operation operation) {
    try {
        return operation();
    } catch (const ConvertError& error) {
        return Refusal{error.message()};
    } catch (const media::Error& error) {
        return Failure{error.kind(), error.technical()};
    } catch (const std::exception& error) {
        return Failure{media::ErrorKind::unknown, error.what()};
    }
}

/// Carries out one request with the descriptors that came with it.
class Task {
public:
    Task(Reporter& reporter, std::vector<Descriptor> descriptors)
        : m_reporter(reporter), m_descriptors(std::move(descriptors)) {}

    Report operator()(const AnalyzeRequest& request) {
        expectDescriptors(1);
        const HandedFiles files(std::move(m_descriptors[0]));
        const auto factory = media::makeFactory(files);
        return outcome(
            [&]() -> Report { return Converter::analyze(request.source, {}, *factory); });
    }

    Report operator()(const ConvertRequest& request) {
        expectDescriptors(2);
        const HandedFiles files(std::move(m_descriptors[0]), std::move(m_descriptors[1]));
        const auto factory = media::makeFactory(files);
        const auto progress = [this](double fraction) { m_reporter.reportProgress(fraction); };
        return outcome([&]() -> Report {
            return Converter::convert(request.source, request.info, request.target, request.size,
                                      request.removeAudio, request.output, progress, {}, *factory);
        });
    }

private:
    void expectDescriptors(std::size_t count) const {
        if (m_descriptors.size() != count)
            throw MalformedMessage("a request lacks its files");
    }

    Reporter& m_reporter;
    std::vector<Descriptor> m_descriptors;
};

Channel::Message nextMessage(Channel& channel) {
    while (true) {
        if (auto message = channel.receive())
            return std::move(*message);
        waitUntilReadable(channel.descriptor());
    }
}

} // namespace

void serve(Channel& channel, const std::string& missingRestraints) {
    Reporter reporter(channel);
    reporter.report(Ready{.missingRestraints = missingRestraints});
    while (true) {
        Channel::Message message = nextMessage(channel);
        const Request request = decodeRequest(message.bytes);
        reporter.report(std::visit(Task(reporter, std::move(message.descriptors)), request));
    }
}

} // namespace boxlift::worker
