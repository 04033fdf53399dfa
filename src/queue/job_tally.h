#pragma once

#include <QObject>

#include "queue/job.h"

namespace boxlift {

/// Keeps count of the jobs that can be converted and of those that are done, as they change. Main
/// thread.
class JobTally : public QObject {
    Q_OBJECT

public:
    void watch(const Job& job);
    void forget(const Job& job);

    int pendingCount() const { return m_pendingCount; }
    int doneCount() const { return m_doneCount; }

signals:
    void pendingCountChanged();
    void hasDoneChanged();

private:
    /// What a job counts for.
    struct Share {
        int pending = 0;
        int done = 0;
    };

    static Share shareOf(const Job& job);
    void update(const Job& job);
    void add(const Share& share);

    QHash<const Job*, Share> m_shares;
    int m_pendingCount = 0;
    int m_doneCount = 0;
};

} // namespace boxlift
