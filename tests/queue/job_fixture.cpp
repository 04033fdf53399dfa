#include "queue/job_fixture.h"

#include "model/convert_error.h"

namespace boxlift {

namespace fs = std::filesystem;

void PrintTo(const Analyzing&, std::ostream* out) {
    *out << "analyzing";
}

void PrintTo(const Ready&, std::ostream* out) {
    *out << "ready";
}

void PrintTo(const Converting&, std::ostream* out) {
    *out << "converting";
}

void PrintTo(const Done& done, std::ostream* out) {
    *out << "done: " << done.output.native()
         << (done.mode == Mode::boxlift ? " copied" : " encoded") << " in " << done.seconds;
}

void PrintTo(const Failed& failed, std::ostream* out) {
    *out << "failed: " << failed.message;
}

namespace test {

namespace {

std::string nameOf(const JobState& state) {
    if (const auto* failed = std::get_if<Failed>(&state))
        return "failed: " + failed->message;
    const char* const names[] = {"analyzing", "ready", "converting", "done"};
    return names[state.index()];
}

bool isIn(const Job& job, Job::StateKind kind) {
    return job.stateKind() == kind;
}

} // namespace

JobLog::JobLog(const Job& job) {
    QObject::connect(&job, &Job::stateChanged, &m_context,
                     [&] { m_events.push_back(nameOf(job.state())); });
    QObject::connect(&job, &Job::progressChanged, &m_context,
                     [&] { m_events.push_back(testing::PrintToString(job.progress())); });
}

std::shared_ptr<Job> JobFixture::makeJob(const std::string& name, const JobSettings& settings) {
    return std::make_shared<Job>(input(name), settings, m_workers);
}

std::shared_ptr<Job> JobFixture::makeReadyJob(const std::string& name, const JobSettings& settings,
                                              const MediaInfo& info) {
    m_engine.analyzes(input(name), [info](const auto&) { return info; });
    auto job = makeJob(name, settings);
    analyze(*job);
    EXPECT_EQ(job->state(), Job::State(Ready{}));
    return job;
}

std::shared_ptr<Job> JobFixture::makeDoneJob(const std::string& name, const JobSettings& settings,
                                             const MediaInfo& info) {
    auto job = makeReadyJob(name, settings, info);
    run(*job);
    EXPECT_TRUE(isIn(*job, Job::StateKind::Done));
    return job;
}

std::shared_ptr<Job> JobFixture::makeFailedJob(const std::string& name,
                                               const std::string& message) {
    auto job = makeReadyJob(name);
    m_engine.converts(job->path(), [message](const auto&, const auto&, const auto&) -> Mode {
        throw ConvertError(message);
    });
    run(*job);
    EXPECT_EQ(job->state(), Job::State(Failed{message}));
    return job;
}

void JobFixture::analyze(Job& job) {
    job.analyze();
    ASSERT_TRUE(spinUntil([&] { return !isIn(job, Job::StateKind::Analyzing); }));
}

void JobFixture::run(Job& job, const std::stop_token& stop) {
    job.run(outputDir(), stop);
    ASSERT_TRUE(spinUntil([&] { return !isIn(job, Job::StateKind::Converting); }));
}

void JobFixture::runToGate(Job& job, Gate& gate, const std::stop_token& stop) {
    job.run(outputDir(), stop);
    ASSERT_TRUE(spinUntil([&] { return gate.wasReached(); }));
}

} // namespace test
} // namespace boxlift
