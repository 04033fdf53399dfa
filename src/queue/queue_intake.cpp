#include "queue/queue.h"

#include <string_view>
#include <unordered_set>

#include "queue/expand.h"
#include "queue/file_url.h"

namespace boxlift {

namespace {

namespace fs = std::filesystem;

/// An item whose URL is there already.
Queue::DropItem arrived(const QUrl& url) {
    return [url](const std::function<void(std::optional<QUrl>)>& deliver) { deliver(url); };
}

} // namespace

void Queue::add(const QList<QUrl>& urls) {
    std::vector<fs::path> paths;
    for (const QUrl& url : urls) {
        if (fs::path path = filePath(url); !path.empty())
            paths.push_back(std::move(path));
    }
    addPaths(paths);
}

void Queue::addPaths(const std::vector<fs::path>& paths) {
    if (m_workers.stop.stop_requested())
        return;
    const std::vector<fs::path> files = expand(paths);
    std::unordered_set<std::string_view> added;
    JobList::Jobs jobs;
    for (const fs::path& file : files) {
        if (!m_jobs.contains(file) && added.insert(file.native()).second)
            jobs.push_back(std::make_shared<Job>(file, m_defaults, m_workers));
    }
    for (const auto& job : jobs)
        m_tally.watch(*job);
    m_jobs.append(jobs);
    for (const auto& job : jobs)
        analyze(job);
}

/// Nobody waits for it: the job says how it ended.
QCoro::Task<> Queue::analyze(std::shared_ptr<Job> job) {
    co_await m_workers.turns.nextTurn();
    auto analysis = job->analyze();
    co_await analysis;
}

void Queue::handleDrop(const std::vector<DropItem>& items) {
    for (const DropItem& load : items) {
        load([this, mailbox = m_workers.turns.mailbox()](std::optional<QUrl> url) {
            if (url)
                mailbox->post([this, url = *url] { add({url}); });
        });
    }
}

void Queue::handleDrop(const QList<QUrl>& urls) {
    std::vector<DropItem> items;
    for (const QUrl& url : urls)
        items.push_back(arrived(url));
    handleDrop(items);
}

void Queue::chooseFiles() {
    add(m_chooser.chooseFiles(QStringLiteral("Choose video or audio files to convert")));
}

} // namespace boxlift
