#pragma once

#include <array>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

namespace boxlift::bench {

/// The columns.
inline constexpr auto jobCounts = std::to_array({1'000, 10'000, 100'000});

/// A row of the table; its name is that of the counter that fills it.
struct ScaleRow {
    /// Which of several measurements counts: of a time the least, for other programs only ever add
    /// to it; the most of what must never be exceeded, and of memory, some of which may have been
    /// left behind by an earlier measurement.
    enum class Counts { least, most };

    std::string_view name;
    int decimals;
    /// Of the queue with 10,000 jobs.
    std::string_view budget = "";
    Counts counts = Counts::least;
};

/// Collects the counters of benchmarks whose argument is a number of jobs, and prints them at the
/// end: a row for each counter, a column for each number.
class ScaleTable : public benchmark::BenchmarkReporter {
public:
    explicit ScaleTable(std::span<const ScaleRow> rows) : m_rows(rows) {}

    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override;
    void Finalize() override;

    bool hasErrors() const { return m_hasErrors; }

private:
    using Values = std::map<int, double>; ///< by number of jobs

    void take(const Run& run);
    void printRow(const ScaleRow& row) const;

    const std::span<const ScaleRow> m_rows;
    std::map<std::string_view, Values> m_values;
    bool m_hasErrors = false;
};

} // namespace boxlift::bench
