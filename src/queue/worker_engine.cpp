#include "queue/worker_engine.h"

#include <array>
#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

#include "engine/cancellation.h"
#include "engine/media/error.h"
#include "engine/media/input_file.h"
#include "engine/media/output_file.h"
#include "engine/refusal.h"
#include "queue/worker_call.h"
#include "queue/worker_stock.h"

namespace boxlift {

namespace {

namespace fs = std::filesystem;

/// A worker is replaced after so many analyses: whatever they have left in it goes with it.
constexpr int analysesPerWorker = 500;

/// A conversion may think for as long as it likes; who does not like to wait stops it.
constexpr std::chrono::hours forConversions(24 * 365);

/// Of a worker that cannot be started, or is not the one that belongs to this program.
constexpr const char* incomplete = "A part of Boxlift is missing. Install Boxlift again.";
constexpr const char* stopped = "The conversion stopped unexpectedly. The file may be damaged.";

/// Throws WorkerLost when the report is no answer to what was asked.
template <typename Result>
void requireAnswer(const worker::Report& report) {
    if (!std::holds_alternative<Result>(report) &&
        !std::holds_alternative<worker::Refusal>(report) &&
        !std::holds_alternative<worker::Failure>(report))
        throw WorkerLost("it answers what it was not asked");
}

/// Of an answer.
template <typename Result>
Result resultOf(const worker::Report& report) {
    if (const auto* refusal = std::get_if<worker::Refusal>(&report))
        throw ConvertError(refusal->sentence);
    if (const auto* failure = std::get_if<worker::Failure>(&report))
        throw media::Error(failure->kind, failure->technical);
    return std::get<Result>(report);
}

/// What `work` returns. A worker that is lost is the end of it: the log says how, people are told
/// `consequence`.
template <typename Work>
auto orIfLost(WorkerProcess& worker, const ConvertError& consequence, Work work) {
    try {
        return work();
    } catch (const WorkerLost& lost) {
        const std::string name = "boxlift-worker " + std::to_string(worker.id());
        media::logError(std::runtime_error(name + ": " + lost.what() + "; it " + worker.end()));
        throw consequence;
    }
}

std::shared_ptr<const media::InputFile> openToAnalyze(const fs::path& url) {
    try {
        return media::InputFile::open(url);
    } catch (const media::Error& error) {
        media::logError(error);
        throw Converter::cannotOpen();
    }
}

/// Any thread.
class WorkerEngine {
public:
    explicit WorkerEngine(const WorkerSettings& settings)
        : m_patience(settings.patience), m_stock(settings.program) {}

    void prepare() { m_stock.prepare(worker::Role::analysis); }

    MediaInfo analyze(const fs::path& url, const std::stop_token& stop) {
        return Converter::cancellable(stop, [&] {
            Converter::refuseUnsupported(url);
            const auto source = openToAnalyze(url);
            auto worker = startedWorker(worker::Role::analysis, stop);
            const worker::Report report = orIfLost(*worker, Converter::cannotOpen(), [&] {
                return ask<MediaInfo>(WorkerCall(*worker, stop, m_patience),
                                      worker::AnalyzeRequest{url}, std::array{source->descriptor()},
                                      {});
            });
            if (worker->requestCount() < analysesPerWorker)
                m_stock.giveBack(std::move(worker));
            return resultOf<MediaInfo>(report);
        });
    }

    Mode convert(const worker::ConvertRequest& request, const Converter::Progress& progress,
                 const std::stop_token& stop) {
        const Mode mode = Converter::cancellable(stop, [&] {
            media::clearOutput(request.output, request.source);
            const auto source = media::InputFile::open(request.source);
            const auto output = media::OutputFile::create(request.output);
            const Mode used = convertInWorker(request, *source, *output, progress, stop);
            throwIfStopped(stop);
            output->publish();
            return used;
        });
        progress(1.0);
        return mode;
    }

private:
    template <typename Result, std::size_t Count>
    static worker::Report ask(WorkerCall&& call, const worker::Request& request,
                              const std::array<int, Count>& descriptors,
                              const Converter::Progress& progress) {
        worker::Report report = call.ask(request, descriptors, progress);
        requireAnswer<Result>(report);
        return report;
    }

    /// The worker has ended when this returns.
    Mode convertInWorker(const worker::ConvertRequest& request, const media::InputFile& source,
                         const media::OutputFile& output, const Converter::Progress& progress,
                         const std::stop_token& stop) {
        const auto worker = startedWorker(worker::Role::conversion, stop);
        return resultOf<Mode>(orIfLost(*worker, ConvertError(stopped), [&] {
            return ask<Mode>(WorkerCall(*worker, stop, forConversions), request,
                             std::array{source.descriptor(), output.descriptor()}, progress);
        }));
    }

    std::unique_ptr<WorkerProcess> startedWorker(worker::Role role, const std::stop_token& stop) {
        auto worker = takeWorker(role);
        m_stock.prepare(worker::Role::conversion);
        logMissing(orIfLost(*worker, ConvertError(incomplete),
                            [&] { return WorkerCall(*worker, stop, m_patience).awaitStart(); }));
        return worker;
    }

    std::unique_ptr<WorkerProcess> takeWorker(worker::Role role) {
        try {
            return m_stock.take(role);
        } catch (const std::system_error& error) {
            media::logError(error);
            throw ConvertError(incomplete);
        }
    }

    /// Once: it is the same for all workers.
    void logMissing(const std::string& restraints) {
        if (!restraints.empty() && !m_hasLoggedMissing.exchange(true))
            media::logError(std::runtime_error("this system does not restrain boxlift-worker by " +
                                               restraints));
    }

    const std::chrono::milliseconds m_patience;
    std::atomic<bool> m_hasLoggedMissing = false;
    WorkerStock m_stock;
};

} // namespace

Engine workerEngine(const WorkerSettings& settings) {
    const auto engine = std::make_shared<WorkerEngine>(settings);
    return {
        .analyze = [engine](const fs::path& url,
                            std::stop_token stop) { return engine->analyze(url, stop); },
        .convert =
            [engine](const fs::path& url, const MediaInfo& info, Target target, SizeOption size,
                     bool removeAudio, const fs::path& output, const Converter::Progress& progress,
                     std::stop_token stop) {
                return engine->convert({url, info, target, size, removeAudio, output}, progress,
                                       stop);
            },
        .prepare = [engine] { engine->prepare(); },
    };
}

} // namespace boxlift
