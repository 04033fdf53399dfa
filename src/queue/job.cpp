#include "queue/job.h"

#include <utility>

#include "model/job_rules.h"
#include "queue/conversion.h"
#include "queue/failure_message.h"
#include "queue/file_url.h"
#include "queue/on_worker.h"
#include "queue/progress_relay.h"

namespace boxlift {

Job::Job(std::filesystem::path path, const JobSettings& settings, Workers& workers)
    : m_id(QUuid::createUuid()), m_path(std::move(path)), m_workers(workers), m_settings(settings) {
}

std::optional<std::string> Job::blocker() const {
    return m_info ? boxlift::blocker(*m_info, target()) : std::nullopt;
}

std::optional<Plan> Job::plan() const {
    if (!m_info || blocker())
        return std::nullopt;
    return Converter::plan(*m_info, target(), size(), removeAudio());
}

bool Job::canConvert() const {
    const bool isWaiting =
        std::holds_alternative<Ready>(m_state) || std::holds_alternative<Failed>(m_state);
    return isWaiting && m_info && !blocker();
}

void Job::setTarget(Target target) {
    if (std::exchange(m_settings.target, target) != target)
        emit targetChanged();
    settingChanged();
}

void Job::setSize(SizeOption size) {
    if (std::exchange(m_settings.size, size) != size)
        emit sizeChanged();
    settingChanged();
}

void Job::setRemoveAudio(bool removeAudio) {
    if (std::exchange(m_settings.removeAudio, removeAudio) != removeAudio)
        emit removeAudioChanged();
    settingChanged();
}

void Job::settingChanged() {
    emit planChanged();
    if (!std::holds_alternative<Done>(m_state))
        return refreshCanConvert();
    setState(Ready{});
    setProgress(0.0);
}

QCoro::Task<> Job::analyze() {
    const auto self = shared_from_this();
    const auto work = [this] {
        return m_workers.engine.analyze(m_path, m_workers.stop.get_token());
    };
    try {
        auto hop = onWorker(m_workers.analyses, m_workers.turns, work);
        const MediaInfo info = co_await hop;
        setInfo(info);
        setState(Ready{});
    } catch (...) {
        // A stop means that the application ends.
        if (!m_workers.stop.stop_requested())
            setState(Failed{failureMessage()});
    }
}

QCoro::Task<> Job::run(std::filesystem::path outputDir, std::stop_token stop) {
    if (!m_info)
        co_return;
    const auto self = shared_from_this();
    setState(Converting{});
    setProgress(0.0);
    const auto relay = std::make_shared<ProgressRelay>(m_workers.turns.mailbox(),
                                                       [weak = weak_from_this()](double fraction) {
                                                           if (const auto job = weak.lock())
                                                               job->takeReport(fraction);
                                                       });
    const Conversion conversion{m_path,
                                *m_info,
                                target(),
                                size(),
                                removeAudio(),
                                std::move(outputDir),
                                [relay](double fraction) { relay->report(fraction); },
                                stop};
    const auto work = [&] { return conversion.run(m_workers.engine); };
    try {
        auto hop = onWorker(m_workers.conversions, m_workers.turns, work);
        const ConversionResult result = co_await hop;
        relay->close();
        endRun(result.output, result.mode, result.seconds);
    } catch (...) {
        relay->close();
        endRunWithCurrentException(stop);
    }
}

void Job::endRun(const std::filesystem::path& output, Mode mode, double seconds) {
    setProgress(1.0);
    setState(Done{output, mode, seconds});
}

/// Whatever came back after a stop was asked for, the job was cancelled.
void Job::endRunWithCurrentException(const std::stop_token& stop) {
    try {
        if (stop.stop_requested())
            throw Cancelled();
        throw;
    } catch (const Cancelled&) {
        setState(Ready{});
        setProgress(0.0);
    } catch (...) {
        setState(Failed{failureMessage()});
    }
}

void Job::takeReport(double progress) {
    if (!std::holds_alternative<Converting>(m_state))
        return;
    m_progress = progress;
    emit progressChanged();
}

void Job::setInfo(const MediaInfo& info) {
    m_info = info;
    emit infoChanged();
    emit planChanged();
    if (const Target suitable = targetFor(*m_info, target()); suitable != target())
        setTarget(suitable);
}

void Job::setState(State state) {
    m_state = std::move(state);
    emit stateChanged();
    refreshCanConvert();
}

void Job::setProgress(double progress) {
    if (std::exchange(m_progress, progress) != progress)
        emit progressChanged();
}

void Job::refreshCanConvert() {
    const bool can = canConvert();
    if (std::exchange(m_couldConvert, can) != can)
        emit canConvertChanged();
}

} // namespace boxlift
