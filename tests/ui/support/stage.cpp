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
    return {.hasVideo = true,
            .hasAudio = true,
            .videoCodec = fourCharCode("avc1"),
            .audioCodec = fourCharCode("aac "),
            .width = 1920,
            .height = 1080,
            .duration = 724};
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

class Stage::Chooser : public FileChooser {
public:
    explicit Chooser(Stage& stage) : m_stage(stage) {}

    QList<QUrl> chooseFiles(const QString&) override {
        ++m_stage.filePanels;
        return m_stage.chosenFiles;
    }

    std::optional<QUrl> chooseFolder(const QString&, const QUrl&) override {
        ++m_stage.folderPanels;
        return m_stage.chosenFolder;
    }

private:
    Stage& m_stage;
};

class Stage::Memory : public Preferences {
public:
    std::optional<std::string> string(std::string_view) const override { return m_value; }
    void setString(std::string_view, const std::string& value) override { m_value = value; }

private:
    std::optional<std::string> m_value;
};

Stage::Stage()
    : m_chooser(std::make_unique<Chooser>(*this)), m_preferences(std::make_unique<Memory>()) {
    const Engine engine{
        .analyze = [this](const std::filesystem::path& url,
                          std::stop_token stop) { return analyze(url, stop); },
        .convert = [this](const std::filesystem::path&, const MediaInfo&, Target, SizeOption, bool,
                          const std::filesystem::path&, const Converter::Progress& progress,
                          std::stop_token stop) { return wait(progress, stop); },
    };
    m_queue = std::make_unique<Queue>(
        QueueServices{engine, *m_chooser, *m_preferences, {{outputDir()}, m_folder.path()}});
}

Stage::~Stage() = default;

MediaInfo Stage::analyze(const std::filesystem::path& path, const std::stop_token& stop) {
    std::unique_lock lock(m_mutex);
    const auto found = m_analyses.find(path.filename().string());
    if (found != m_analyses.end())
        return found->second();
    m_changed.wait(lock, stop, [] { return false; });
    throw Cancelled();
}

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

Job* Stage::add(const std::string& name, std::optional<std::function<MediaInfo()>> analysis) {
    if (analysis) {
        const std::lock_guard lock(m_mutex);
        m_analyses[name] = *std::move(analysis);
    }
    m_queue->addPaths({writeFile(path(name))});
    return m_queue->jobs().back().get();
}

Job* Stage::addReading(const std::string& name) {
    return add(name, std::nullopt);
}

Job* Stage::addReady(const std::string& name, const MediaInfo& info) {
    Job* job = add(name, [info] { return info; });
    if (!becomes(job, Job::StateKind::Ready))
        qFatal("%s does not become ready", name.c_str());
    return job;
}

Job* Stage::addFailed(const std::string& name, const std::string& message) {
    Job* job = add(name, [message]() -> MediaInfo { throw ConvertError(message); });
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
    m_queue->convert(job);
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
    if (!QTest::qWaitFor([this] { return !m_queue->isRunning(); }))
        qFatal("The conversion does not end");
}

} // namespace boxlift::test
