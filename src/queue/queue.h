#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include <QCoroTask>
#include <QList>
#include <QObject>
#include <QUrl>

#include "queue/file_chooser.h"
#include "queue/job.h"
#include "queue/job_list.h"
#include "queue/job_tally.h"
#include "queue/output_folder.h"
#include "queue/run_counts.h"
#include "queue/task.h"
#include "queue/workers.h"

namespace boxlift {

/// The outside world of a queue. All of it outlives the queue.
struct QueueServices {
    Engine engine;
    FileChooser& chooser;
    Preferences& preferences;
    UserFolders folders;
};

/// The application's one model object: the list of jobs, the settings that new ones take, the run
/// that goes on, the output folder. Main thread. Its end stops whatever runs and waits for it.
///
/// As properties, the default target and size are positions in allTargets and allSizeOptions.
class Queue : public QObject {
    Q_OBJECT
    Q_PROPERTY(boxlift::JobList* jobs READ jobList CONSTANT FINAL)
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY isRunningChanged FINAL)
    Q_PROPERTY(int defaultTarget READ defaultTargetIndex WRITE setDefaultTargetIndex NOTIFY
                   defaultTargetChanged FINAL)
    Q_PROPERTY(
        bool defaultTargetIsAudio READ defaultTargetIsAudio NOTIFY defaultTargetChanged FINAL)
    Q_PROPERTY(int defaultSize READ defaultSizeIndex WRITE setDefaultSizeIndex NOTIFY
                   defaultSizeChanged FINAL)
    Q_PROPERTY(bool defaultRemoveAudio READ defaultRemoveAudio WRITE setDefaultRemoveAudio NOTIFY
                   defaultRemoveAudioChanged FINAL)
    Q_PROPERTY(QUrl outputDir READ outputDirUrl WRITE setOutputDirUrl NOTIFY outputDirChanged FINAL)
    Q_PROPERTY(boxlift::Task* task READ task NOTIFY taskChanged FINAL)
    Q_PROPERTY(bool hasFinished READ hasFinished NOTIFY hasFinishedChanged FINAL)
    Q_PROPERTY(int pendingCount READ pendingCount NOTIFY pendingCountChanged FINAL)

public:
    /// Delivers the URL of a dropped item, or nothing, later and on any thread.
    using DropItem = std::function<void(std::function<void(std::optional<QUrl>)> deliver)>;

    explicit Queue(QueueServices services);
    ~Queue() override;

    const JobList::Jobs& jobs() const { return m_jobs.jobs(); }
    JobList* jobList() { return &m_jobs; }
    bool isRunning() const { return m_isRunning; }
    /// Where other threads leave what is to be done with the queue on the main one: it is done in
    /// its turn, ahead of all that workers bring afterwards. Closed when the queue ends.
    const std::shared_ptr<Mailbox>& mailbox() const { return m_workers.turns.mailbox(); }

    // What new jobs take; the others keep what they have.
    Target defaultTarget() const { return m_defaults.target; }
    SizeOption defaultSize() const { return m_defaults.size; }
    bool defaultRemoveAudio() const { return m_defaults.removeAudio; }
    void setDefaultTarget(Target target);
    void setDefaultSize(SizeOption size);
    void setDefaultRemoveAudio(bool removeAudio);

    const std::filesystem::path& outputDir() const { return m_outputFolder.path(); }
    /// Remembered between runs of the application.
    void setOutputDir(const std::filesystem::path& path);

    // Intake.
    /// A job for each file, folders standing for the files in them, that is not in the list yet;
    /// its analysis begins. What is not a file of this machine is left out.
    Q_INVOKABLE void add(const QList<QUrl>& urls);
    void addPaths(const std::vector<std::filesystem::path>& paths);
    /// Returns before any URL has arrived; each is added by itself.
    void handleDrop(const std::vector<DropItem>& items);
    Q_INVOKABLE void handleDrop(const QList<QUrl>& urls);
    Q_INVOKABLE void chooseFiles();

    // Run control.
    /// The run that goes on or the last one; null before the first.
    Task* task() const { return m_task.get(); }
    /// Of the run that goes on or the last one.
    const RunCounts& runCounts() const { return m_runCounts; }
    /// The job that is being converted; null when there is none.
    const Job* current() const { return m_current.get(); }
    Q_INVOKABLE void startAll();
    Q_INVOKABLE void convert(boxlift::Job* job);
    Q_INVOKABLE void remove(boxlift::Job* job);
    Q_INVOKABLE void clearFinished();
    Q_INVOKABLE void applyDefaultsToAll();
    bool hasFinished() const { return m_tally.doneCount() > 0; }
    int pendingCount() const { return m_tally.pendingCount(); }

    Q_INVOKABLE void chooseOutputFolder();

    // For properties.
    int defaultTargetIndex() const { return static_cast<int>(m_defaults.target); }
    bool defaultTargetIsAudio() const { return isAudio(m_defaults.target); }
    int defaultSizeIndex() const { return static_cast<int>(m_defaults.size); }
    void setDefaultTargetIndex(int index);
    void setDefaultSizeIndex(int index);
    QUrl outputDirUrl() const;
    void setOutputDirUrl(const QUrl& url);

signals:
    void isRunningChanged();
    void defaultTargetChanged();
    void defaultSizeChanged();
    void defaultRemoveAudioChanged();
    void outputDirChanged();
    void taskChanged();
    /// Of runCounts and current.
    void runAdvanced();
    void hasFinishedChanged();
    void pendingCountChanged();

private:
    QCoro::Task<> analyze(std::shared_ptr<Job> job);
    QCoro::Task<> runAll(std::stop_token stop);
    QCoro::Task<> runOne(std::shared_ptr<Job> job, std::stop_token stop);
    std::stop_token beginRun();
    void endRun();
    void beginJob(std::shared_ptr<Job> job);
    void countJob(const Job& job);
    void removeIf(const std::function<bool(const Job&)>& predicate);

    FileChooser& m_chooser;
    Workers m_workers;
    JobTally m_tally;
    JobList m_jobs;
    bool m_isRunning = false;
    JobSettings m_defaults;
    OutputFolder m_outputFolder;
    std::unique_ptr<Task> m_task;
    RunCounts m_runCounts;
    std::shared_ptr<Job> m_current;
};

} // namespace boxlift
