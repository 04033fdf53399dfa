#pragma once

#include <filesystem>
#include <memory>
#include <ostream>
#include <stop_token>
#include <string>
#include <vector>

#include <QSignalSpy>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "queue/job.h"
#include "support/event_loop.h"
#include "support/fake_engine.h"
#include "support/gate.h"
#include "support/temp_folder.h"

namespace boxlift {

// What a failed test shows.
void PrintTo(const Analyzing&, std::ostream* out);
void PrintTo(const Ready&, std::ostream* out);
void PrintTo(const Converting&, std::ostream* out);
void PrintTo(const Done& done, std::ostream* out);
void PrintTo(const Failed& failed, std::ostream* out);

namespace test {

/// Notes each state and progress of a job at the moment at which the job tells of it: "converting",
/// "0.25", "failed: It broke."...
class JobLog {
public:
    explicit JobLog(const Job& job);

    const std::vector<std::string>& events() const { return m_events; }

private:
    QObject m_context;
    std::vector<std::string> m_events;
};

/// Jobs without a queue, over the fake engine. The files need not exist.
class JobFixture : public testing::Test {
protected:
    std::filesystem::path input(const std::string& name) const { return m_folder.path() / name; }
    std::filesystem::path outputDir() const { return m_folder.path() / "out"; }
    std::filesystem::path output(const std::string& name) const { return outputDir() / name; }

    std::shared_ptr<Job> makeJob(const std::string& name, const JobSettings& settings = {});
    /// One whose analysis found this.
    std::shared_ptr<Job> makeReadyJob(const std::string& name, const JobSettings& settings = {},
                                      const MediaInfo& info = filmInfo());
    /// One that was converted; its output is made.
    std::shared_ptr<Job> makeDoneJob(const std::string& name, const JobSettings& settings = {},
                                     const MediaInfo& info = filmInfo());
    /// One whose conversion failed with this message.
    std::shared_ptr<Job> makeFailedJob(const std::string& name, const std::string& message);

    /// Analyses and converts to the end.
    void analyze(Job& job);
    void run(Job& job, const std::stop_token& stop = {});
    /// Begins a conversion that comes as far as the gate.
    void runToGate(Job& job, Gate& gate, const std::stop_token& stop = {});

    const TempFolder m_folder;
    FakeEngine m_engine;
    Workers m_workers{m_engine.engine()};
};

} // namespace test
} // namespace boxlift
