#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>

#include <QCoroTask>
#include <QObject>
#include <QString>
#include <QUrl>
#include <QUuid>

#include "model/media_info.h"
#include "model/plan.h"
#include "model/size_option.h"
#include "model/target.h"
#include "queue/job_state.h"
#include "queue/workers.h"

namespace boxlift {

/// What the user can set for a file.
struct JobSettings {
    Target target = Target::mp4;
    SizeOption size = SizeOption::original;
    bool removeAudio = false;

    friend bool operator==(const JobSettings&, const JobSettings&) = default;
};

/// One input file in the queue: what analysis learnt of it, its settings, its state and progress.
/// It knows how to analyse and to convert its file, not when. Main thread; held by shared_ptr, for
/// a job that was removed may still run.
///
/// As properties, `target` and `size` are positions in allTargets and allSizeOptions.
class Job : public QObject, public std::enable_shared_from_this<Job> {
    Q_OBJECT
    Q_PROPERTY(QUuid id READ id CONSTANT FINAL)
    Q_PROPERTY(QUrl url READ url CONSTANT FINAL)
    Q_PROPERTY(QString fileName READ fileName CONSTANT FINAL)
    Q_PROPERTY(bool hasInfo READ hasInfo NOTIFY infoChanged FINAL)
    Q_PROPERTY(bool hasVideo READ hasVideo NOTIFY infoChanged FINAL)
    Q_PROPERTY(bool hasAudio READ hasAudio NOTIFY infoChanged FINAL)
    Q_PROPERTY(QString summary READ summary NOTIFY infoChanged FINAL)
    Q_PROPERTY(boxlift::Job::StateKind state READ stateKind NOTIFY stateChanged FINAL)
    Q_PROPERTY(QUrl output READ output NOTIFY stateChanged FINAL)
    Q_PROPERTY(boxlift::Job::ModeKind usedMode READ usedMode NOTIFY stateChanged FINAL)
    Q_PROPERTY(double seconds READ seconds NOTIFY stateChanged FINAL)
    Q_PROPERTY(QString message READ message NOTIFY stateChanged FINAL)
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged FINAL)
    Q_PROPERTY(int target READ targetIndex WRITE setTargetIndex NOTIFY targetChanged FINAL)
    Q_PROPERTY(int size READ sizeIndex WRITE setSizeIndex NOTIFY sizeChanged FINAL)
    Q_PROPERTY(
        bool removeAudio READ removeAudio WRITE setRemoveAudio NOTIFY removeAudioChanged FINAL)
    Q_PROPERTY(bool targetIsAudio READ targetIsAudio NOTIFY targetChanged FINAL)
    Q_PROPERTY(QString blocker READ blockerText NOTIFY planChanged FINAL)
    Q_PROPERTY(bool hasPlan READ hasPlan NOTIFY planChanged FINAL)
    Q_PROPERTY(boxlift::Job::ModeKind planMode READ planMode NOTIFY planChanged FINAL)
    Q_PROPERTY(QString planDetail READ planDetail NOTIFY planChanged FINAL)
    Q_PROPERTY(bool canConvert READ canConvert NOTIFY canConvertChanged FINAL)

public:
    using State = JobState;

    /// The alternatives of State, in their order.
    enum class StateKind { Analyzing, Ready, Converting, Done, Failed };
    Q_ENUM(StateKind)
    enum class ModeKind { Boxlift, Reencode };
    Q_ENUM(ModeKind)

    /// `workers` outlives every analysis and run of the job.
    Job(std::filesystem::path path, const JobSettings& settings, Workers& workers);

    const QUuid& id() const { return m_id; }
    QUrl url() const;
    /// What `url` names; any bytes.
    const std::filesystem::path& path() const { return m_path; }
    const std::optional<MediaInfo>& info() const { return m_info; }
    const State& state() const { return m_state; }
    /// From 0.0 to 1.0.
    double progress() const { return m_progress; }
    Target target() const { return m_settings.target; }
    SizeOption size() const { return m_settings.size; }
    bool removeAudio() const { return m_settings.removeAudio; }

    // Each assignment, of the same value too, makes a done job ready again.
    void setTarget(Target target);
    void setSize(SizeOption size);
    void setRemoveAudio(bool removeAudio);

    /// Why the settings cannot work for this file; nothing when they can or it is not analysed.
    std::optional<std::string> blocker() const;
    /// Nothing while the file is not analysed or blocked. Made anew at each call.
    std::optional<Plan> plan() const;
    bool canConvert() const;

    /// Finds out what the file holds. The coroutine keeps the job alive.
    QCoro::Task<> analyze();
    /// Converts into a free name in `outputDir`, which is made if it is missing. Does nothing
    /// without info; never throws. A stop makes the job ready again. The coroutine keeps the job
    /// alive.
    QCoro::Task<> run(std::filesystem::path outputDir, std::stop_token stop);

    // For properties.
    QString fileName() const;
    bool hasInfo() const { return m_info.has_value(); }
    bool hasVideo() const { return m_info && m_info->hasVideo; }
    bool hasAudio() const { return m_info && m_info->hasAudio; }
    QString summary() const;
    StateKind stateKind() const { return static_cast<StateKind>(m_state.index()); }
    QUrl output() const;
    ModeKind usedMode() const;
    double seconds() const;
    QString message() const;
    int targetIndex() const { return static_cast<int>(target()); }
    int sizeIndex() const { return static_cast<int>(size()); }
    void setTargetIndex(int index);
    void setSizeIndex(int index);
    bool targetIsAudio() const { return isAudio(target()); }
    QString blockerText() const;
    bool hasPlan() const;
    ModeKind planMode() const;
    QString planDetail() const;

signals:
    void infoChanged();
    void stateChanged();
    /// Also for a report that repeats the last value.
    void progressChanged();
    void targetChanged();
    void sizeChanged();
    void removeAudioChanged();
    /// Of blocker and plan.
    void planChanged();
    void canConvertChanged();

private:
    void setInfo(const MediaInfo& info);
    void setState(State state);
    void setProgress(double progress);
    void takeReport(double progress);
    void settingChanged();
    void refreshCanConvert();
    void endRun(const std::filesystem::path& output, Mode mode, double seconds);
    void endRunWithCurrentException(const std::stop_token& stop);

    const QUuid m_id;
    const std::filesystem::path m_path;
    Workers& m_workers;
    std::optional<MediaInfo> m_info;
    State m_state;
    double m_progress = 0;
    JobSettings m_settings;
    bool m_couldConvert = false;
};

} // namespace boxlift
