#include "queue/queue_fixture.h"

#include <algorithm>

#include "model/convert_error.h"

namespace boxlift::test {

namespace fs = std::filesystem;

namespace {

std::vector<std::string> namesOf(const std::vector<fs::path>& paths) {
    std::vector<std::string> names;
    for (const fs::path& path : paths)
        names.push_back(path.filename().native());
    return names;
}

} // namespace

QueueFixture::QueueFixture(std::optional<Engine> engine) {
    m_queue.emplace(QueueServices{.engine = engine.value_or(m_engine.engine()),
                                  .chooser = m_chooser,
                                  .preferences = m_preferences,
                                  .folders = {.movies = {outputDir()}, .home = m_folder.path()}});
    m_tester.emplace(m_queue->jobList(), QAbstractItemModelTester::FailureReportingMode::Fatal);
}

void QueueFixture::endQueue() {
    m_tester.reset();
    m_queue.reset();
}

std::shared_ptr<Job> QueueFixture::add(const std::string& name) {
    m_queue->addPaths({input(name)});
    const auto& jobs = m_queue->jobs();
    const auto found =
        std::ranges::find_if(jobs, [&](const auto& job) { return job->path() == input(name); });
    return found == jobs.end() ? nullptr : *found;
}

std::shared_ptr<Job> QueueFixture::addAnalyzed(const std::string& name) {
    auto job = add(name);
    EXPECT_TRUE(spinUntil([&] { return job->stateKind() != Job::StateKind::Analyzing; }));
    return job;
}

std::shared_ptr<Job> QueueFixture::addReady(const std::string& name, const MediaInfo& info) {
    m_engine.analyzes(input(name), [info](const auto&) { return info; });
    auto job = addAnalyzed(name);
    EXPECT_EQ(job->state(), Job::State(Ready{}));
    return job;
}

void QueueFixture::convert(Job& job) {
    m_queue->convert(&job);
    EXPECT_TRUE(spinUntilIdle());
}

std::shared_ptr<Job> QueueFixture::addDone(const std::string& name, const MediaInfo& info) {
    auto job = addReady(name, info);
    convert(*job);
    EXPECT_EQ(job->stateKind(), Job::StateKind::Done);
    return job;
}

std::shared_ptr<Job> QueueFixture::addFailed(const std::string& name) {
    auto job = addReady(name);
    m_engine.converts(job->path(), [](const auto&, const auto&, const auto&) -> Mode {
        throw ConvertError("It broke.");
    });
    convert(*job);
    EXPECT_EQ(job->state(), Job::State(Failed{"It broke."}));
    m_engine.converts(job->path(), copyAtOnce);
    return job;
}

void QueueFixture::holdAt(const std::string& name, Gate& gate) {
    m_engine.converts(input(name),
                      [&gate](const auto& call, const auto& progress, const auto& stop) {
                          progress(0.5);
                          gate.pass(stop);
                          return copyAtOnce(call, progress, stop);
                      });
}

bool QueueFixture::spinUntilReached(const Gate& gate) {
    return spinUntil([&] { return gate.wasReached(); });
}

bool QueueFixture::spinUntilIdle() {
    return spinUntil([&] { return !m_queue->isRunning(); });
}

bool QueueFixture::spinUntilAnalyzed() {
    return spinUntil([&] {
        return std::ranges::none_of(m_queue->jobs(), [](const auto& job) {
            return job->stateKind() == Job::StateKind::Analyzing;
        });
    });
}

std::vector<std::string> QueueFixture::names() const {
    std::vector<fs::path> paths;
    for (const auto& job : m_queue->jobs())
        paths.push_back(job->path());
    return namesOf(paths);
}

std::vector<std::string> QueueFixture::converted() const {
    return namesOf(m_engine.converted());
}

} // namespace boxlift::test
