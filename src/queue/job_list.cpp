#include "queue/job_list.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

namespace boxlift {

namespace {

/// Views let go of removed rows with their next frame, not at once.
constexpr std::chrono::seconds departureTime{1};

/// Telling of each stretch by itself costs more than building the view anew from here on.
constexpr std::size_t manyStretches = 256;

} // namespace

JobList::JobList() {
    m_departure.setSingleShot(true);
    m_departure.setInterval(departureTime);
    connect(&m_departure, &QTimer::timeout, this, [this] { m_departed.clear(); });
}

bool JobList::contains(const std::filesystem::path& path) const {
    return m_paths.contains(path.native());
}

void JobList::append(Jobs jobs) {
    if (jobs.empty())
        return;
    const int first = count();
    beginInsertRows({}, first, first + static_cast<int>(jobs.size()) - 1);
    for (const auto& job : jobs)
        m_paths.insert(job->path().native());
    std::ranges::move(jobs, std::back_inserter(m_jobs));
    endInsertRows();
    emit countChanged();
}

JobList::Jobs JobList::removeIf(const std::function<bool(const Job&)>& predicate) {
    const std::vector<Stretch> stretches = stretchesOf(predicate);
    if (stretches.empty())
        return {};
    Jobs removed;
    for (const Stretch& stretch : stretches) {
        for (std::size_t row = stretch.first; row < stretch.last; ++row) {
            m_paths.erase(m_jobs[row]->path().native());
            removed.push_back(m_jobs[row]);
        }
    }
    keepForAMoment(removed);
    if (stretches.size() < manyStretches)
        erase(stretches);
    else
        eraseWithReset(stretches);
    emit countChanged();
    return removed;
}

std::vector<JobList::Stretch>
JobList::stretchesOf(const std::function<bool(const Job&)>& predicate) const {
    std::vector<Stretch> stretches;
    for (std::size_t row = 0; row < m_jobs.size(); ++row) {
        if (!predicate(*m_jobs[row]))
            continue;
        if (!stretches.empty() && stretches.back().last == row)
            ++stretches.back().last;
        else
            stretches.push_back({row, row + 1});
    }
    return stretches;
}

/// From the end, so that the rows of the others stay what they are.
void JobList::erase(const std::vector<Stretch>& stretches) {
    const auto at = [this](std::size_t row) {
        return m_jobs.begin() + static_cast<std::ptrdiff_t>(row);
    };
    for (auto stretch = stretches.rbegin(); stretch != stretches.rend(); ++stretch) {
        beginRemoveRows({}, static_cast<int>(stretch->first), static_cast<int>(stretch->last) - 1);
        m_jobs.erase(at(stretch->first), at(stretch->last));
        endRemoveRows();
    }
}

void JobList::eraseWithReset(const std::vector<Stretch>& stretches) {
    beginResetModel();
    Jobs kept;
    std::size_t row = 0;
    const auto keepUpTo = [&](std::size_t end) {
        for (; row < end; ++row)
            kept.push_back(std::move(m_jobs[row]));
    };
    for (const auto& [first, last] : stretches) {
        keepUpTo(first);
        row = last;
    }
    keepUpTo(m_jobs.size());
    m_jobs = std::move(kept);
    endResetModel();
}

void JobList::keepForAMoment(const Jobs& jobs) {
    std::ranges::copy(jobs, std::back_inserter(m_departed));
    m_departure.start();
}

int JobList::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant JobList::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || role != jobRole)
        return {};
    return QVariant::fromValue(m_jobs[static_cast<std::size_t>(index.row())].get());
}

QHash<int, QByteArray> JobList::roleNames() const {
    return {{jobRole, "job"}};
}

} // namespace boxlift
