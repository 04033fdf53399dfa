#pragma once

#include <memory>

#include <QObject>
#include <QtQml/qqmlregistration.h>

#include "queue/job.h"

namespace boxlift {

/// Keeps a row's job alive for as long as the row shows it: the list lets go of a removed job
/// before its row is gone, and rows that wait for their next job still have their last one.
class JobKeeper : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(boxlift::Job* job READ job WRITE setJob NOTIFY jobChanged FINAL)

public:
    Job* job() const { return m_job.get(); }
    void setJob(Job* job);

signals:
    void jobChanged();

private:
    std::shared_ptr<Job> m_job;
};

} // namespace boxlift
