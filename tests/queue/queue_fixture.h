#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "queue/job_fixture.h"
#include "queue/queue.h"
#include "support/event_loop.h"
#include "support/fake_chooser.h"
#include "support/fake_engine.h"
#include "support/fake_preferences.h"
#include "support/gate.h"
#include "support/temp_folder.h"

namespace boxlift::test {

/// A queue over the fake engine, a fake user and preferences in memory. The files need not exist.
class QueueFixture : public testing::Test {
protected:
    explicit QueueFixture(std::optional<Engine> engine = std::nullopt);
    /// Before what the tests' own classes hold, which a run may refer to.
    void TearDown() override { endQueue(); }

    std::filesystem::path input(const std::string& name) const {
        return m_folder.path() / "in" / name;
    }
    std::filesystem::path outputDir() const { return m_folder.path() / "out"; }
    std::filesystem::path output(const std::string& name) const { return outputDir() / name; }

    Queue& queue() { return *m_queue; }
    /// Ends it, as at the end of the application.
    void endQueue();

    /// The job of `input(name)`, which is added.
    std::shared_ptr<Job> add(const std::string& name);
    /// The same, once it is analysed.
    std::shared_ptr<Job> addAnalyzed(const std::string& name);
    std::shared_ptr<Job> addReady(const std::string& name, const MediaInfo& info = filmInfo());
    /// Converts a ready job by itself; the others wait.
    void convert(Job& job);
    std::shared_ptr<Job> addDone(const std::string& name, const MediaInfo& info = filmInfo());
    std::shared_ptr<Job> addFailed(const std::string& name);

    /// Conversions of the job come to the gate, having reported 0.5.
    void holdAt(const std::string& name, Gate& gate);
    bool spinUntilReached(const Gate& gate);
    bool spinUntilIdle();
    bool spinUntilAnalyzed();

    /// The names of the jobs, in their order.
    std::vector<std::string> names() const;
    /// The names of the files whose conversion began, in their order.
    std::vector<std::string> converted() const;

    const TempFolder m_folder;
    FakeEngine m_engine;
    FakeChooser m_chooser;
    FakePreferences m_preferences;

private:
    std::optional<Queue> m_queue;
    std::optional<QAbstractItemModelTester> m_tester;
};

} // namespace boxlift::test
