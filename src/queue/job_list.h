#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include <QAbstractListModel>
#include <QTimer>

#include "queue/job.h"

namespace boxlift {

/// The ordered list of jobs, as the model of a list of cards: each row has its Job in the role
/// `job`, whose own signals tell of its changes. No two jobs have the same path. Main thread.
class JobList : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged FINAL)

public:
    /// The role of a row's Job.
    static constexpr int jobRole = Qt::UserRole;

    using Jobs = std::vector<std::shared_ptr<Job>>;

    JobList();

    const Jobs& jobs() const { return m_jobs; }
    int count() const { return static_cast<int>(m_jobs.size()); }
    /// Paths are compared as text.
    bool contains(const std::filesystem::path& path) const;

    /// At the end. None of their paths is in the list already, nor twice among them.
    void append(Jobs jobs);
    /// Takes out those that the predicate names and returns them; the others keep their order.
    Jobs removeIf(const std::function<bool(const Job&)>& predicate);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

signals:
    void countChanged();

private:
    /// Rows from first up to last, exclusive.
    struct Stretch {
        std::size_t first;
        std::size_t last;
    };

    std::vector<Stretch> stretchesOf(const std::function<bool(const Job&)>& predicate) const;
    void erase(const std::vector<Stretch>& stretches);
    void eraseWithReset(const std::vector<Stretch>& stretches);
    void keepForAMoment(const Jobs& jobs);

    Jobs m_jobs;
    std::unordered_set<std::string_view> m_paths; ///< of m_jobs, which own them
    Jobs m_departed;
    QTimer m_departure;
};

} // namespace boxlift
