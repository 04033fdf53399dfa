#include "queue/queue.h"

#include <utility>

#include "queue/file_url.h"

namespace boxlift {

Queue::Queue(QueueServices services)
    : m_chooser(services.chooser), m_workers(std::move(services.engine)),
      m_outputFolder(services.preferences, services.folders) {
    connect(&m_tally, &JobTally::pendingCountChanged, this, &Queue::pendingCountChanged);
    connect(&m_tally, &JobTally::hasDoneChanged, this, &Queue::hasFinishedChanged);
}

Queue::~Queue() {
    if (m_task)
        m_task->cancel();
    m_workers.end();
}

void Queue::setDefaultTarget(Target target) {
    if (std::exchange(m_defaults.target, target) != target)
        emit defaultTargetChanged();
}

void Queue::setDefaultSize(SizeOption size) {
    if (std::exchange(m_defaults.size, size) != size)
        emit defaultSizeChanged();
}

void Queue::setDefaultRemoveAudio(bool removeAudio) {
    if (std::exchange(m_defaults.removeAudio, removeAudio) != removeAudio)
        emit defaultRemoveAudioChanged();
}

void Queue::setDefaultTargetIndex(int index) {
    if (index >= 0 && index < static_cast<int>(allTargets.size()))
        setDefaultTarget(allTargets.at(static_cast<std::size_t>(index)));
}

void Queue::setDefaultSizeIndex(int index) {
    if (index >= 0 && index < static_cast<int>(allSizeOptions.size()))
        setDefaultSize(allSizeOptions.at(static_cast<std::size_t>(index)));
}

void Queue::setOutputDir(const std::filesystem::path& path) {
    m_outputFolder.set(path);
    emit outputDirChanged();
}

QUrl Queue::outputDirUrl() const {
    return fileUrl(outputDir());
}

void Queue::setOutputDirUrl(const QUrl& url) {
    if (const std::filesystem::path path = filePath(url); !path.empty())
        setOutputDir(path);
}

void Queue::chooseOutputFolder() {
    if (const auto chosen = m_chooser.chooseFolder(QStringLiteral("Choose"), outputDirUrl()))
        setOutputDirUrl(*chosen);
}

} // namespace boxlift
