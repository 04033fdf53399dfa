#include "ui/support/stage.h"

#include <utility>

#include <QTest>

#include "model/cancelled.h"
#include "model/convert_error.h"

namespace boxlift::test {

namespace {

bool becomes(Job* job, Job::StateKind state) {
    return QTest::qWaitFor([=] { return job->stateKind() == state; });
}

} // namespace

MediaInfo film() {
    MediaInfo info = filmInfo();
    info.duration = 724;
    return info;
}

MediaInfo song() {
    return {.hasAudio = true, .audioCodec = fourCharCode(".mp3"), .duration = 3737};
}

MediaInfo silentFilm() {
    MediaInfo info = film();
    info.hasAudio = false;
    info.audioCodec.reset();
    return info;
}

Stage::Stage()
    : m_queue({engine.engine(), chooser, m_preferences, {{outputDir()}, m_folder.path()}}) {
    engine.convertsOtherwise([this](const ConvertCall&, const Converter::Progress& progress,
                                    const std::stop_token& stop) { return wait(progress, stop); });
}

Stage::~Stage() = default;

Mode Stage::wait(const Converter::Progress& progress, const std::stop_token& stop) {
    std::unique_lock lock(m_mutex);
    while (!stop.stop_requested()) {
        m_changed.wait(lock, stop, [this] { return m_report || m_outcome; });
        if (m_report)
            progress(*std::exchange(m_report, std::nullopt));
        if (m_outcome)
            return std::exchange(m_outcome, nullptr)();
    }
    throw Cancelled();
}

Job* Stage::add(const std::string& name, FakeEngine::Analysis analysis) {
    engine.analyzes(path(name), std::move(analysis));
    m_queue.addPaths({writeFile(path(name))});
    return m_queue.jobs().back().get();
}

Job* Stage::addReading(const std::string& name) {
    return add(name, [this](const std::stop_token& stop) {
        m_never.pass(stop);
        return film();
    });
}

Job* Stage::addReady(const std::string& name, const MediaInfo& info) {
    Job* job = add(name, [info](const std::stop_token&) { return info; });
    if (!becomes(job, Job::StateKind::Ready))
        qFatal("%s does not become ready", name.c_str());
    return job;
}

Job* Stage::addFailed(const std::string& name, const std::string& message) {
    Job* job =
        add(name, [message](const std::stop_token&) -> MediaInfo { throw ConvertError(message); });
    if (!becomes(job, Job::StateKind::Failed))
        qFatal("%s does not fail", name.c_str());
    return job;
}

Job* Stage::addDone(const std::string& name, Mode mode, const MediaInfo& info) {
    Job* job = addReady(name, info);
    convert(job);
    finish(mode);
    return job;
}

void Stage::convert(Job* job) {
    m_queue.convert(job);
    if (!becomes(job, Job::StateKind::Converting))
        qFatal("The conversion does not start");
}

void Stage::report(double progress) {
    {
        const std::lock_guard lock(m_mutex);
        m_report = progress;
    }
    m_changed.notify_all();
}

void Stage::finish(Mode mode) {
    conclude([mode] { return mode; });
}

void Stage::fail(const std::string& message) {
    conclude([message]() -> Mode { throw ConvertError(message); });
}

void Stage::conclude(Outcome outcome) {
    {
        const std::lock_guard lock(m_mutex);
        m_outcome = std::move(outcome);
    }
    m_changed.notify_all();
    if (!QTest::qWaitFor([this] { return !m_queue.isRunning(); }))
        qFatal("The conversion does not end");
}

} // namespace boxlift::test
