#pragma once

#include <optional>
#include <stop_token>

#include <QObject>

#include "drive/command_line.h"
#include "drive/event_writer.h"
#include "drive/events.h"
#include "queue/job.h"

namespace boxlift::drive {

/// Listens to the jobs of a queue, writes what becomes of each as it happens, and counts. After a
/// stop it passes over analyses that fail: the stop broke them off. Main thread; outlives the
/// queue, whose end may bring the last news.
class JobReporter : public QObject {
public:
    JobReporter(EventWriter& events, std::stop_token stop);

    /// `job` is not analysed yet.
    void watch(const Job& job);

    bool hasAllAnalyses() const { return m_readyCount + m_analysisFailures == m_jobCount; }
    int jobCount() const { return m_jobCount; }
    Counts counts(Command command) const;

private:
    void stateChanged(const Job& job);
    void analysisEnded(const Job& job);
    void runEnded(const Job& job);
    void writeFailure(const Job& job);
    void writeProgress(const Job& job);

    EventWriter& m_events;
    const std::stop_token m_stop;
    const Job* m_converting = nullptr;
    std::optional<double> m_writtenProgress; ///< of m_converting
    int m_jobCount = 0;
    int m_readyCount = 0;
    int m_blockedCount = 0;
    int m_analysisFailures = 0;
    int m_doneCount = 0;
    int m_runFailures = 0;
};

} // namespace boxlift::drive
