#pragma once

#include <QtQml/qqmlregistration.h>

#include "queue/job.h"
#include "queue/job_list.h"
#include "queue/queue.h"
#include "queue/task.h"

namespace boxlift {

// The queue's types as QML knows them; the queue itself knows nothing of QML.

struct JobType {
    Q_GADGET
    QML_FOREIGN(boxlift::Job)
    QML_NAMED_ELEMENT(Job)
    QML_UNCREATABLE("The queue makes the jobs")
};

struct JobListType {
    Q_GADGET
    QML_FOREIGN(boxlift::JobList)
    QML_NAMED_ELEMENT(JobModel)
    QML_UNCREATABLE("The queue has the list of jobs")
};

struct QueueType {
    Q_GADGET
    QML_FOREIGN(boxlift::Queue)
    QML_NAMED_ELEMENT(Queue)
    QML_UNCREATABLE("There is one queue, made before the window")
};

struct TaskType {
    Q_GADGET
    QML_FOREIGN(boxlift::Task)
    QML_NAMED_ELEMENT(Task)
    QML_UNCREATABLE("The queue makes the tasks")
};

} // namespace boxlift
