#include "bench/scale_table.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

namespace boxlift::bench {

void ScaleTable::ReportRuns(const std::vector<Run>& runs) {
    for (const Run& run : runs) {
        if (run.run_type == Run::RT_Iteration)
            take(run);
    }
}

void ScaleTable::take(const Run& run) {
    if (run.error_occurred) {
        m_hasErrors = true;
        std::cerr << run.benchmark_name() << ": " << run.error_message << '\n';
        return;
    }
    const int jobCount = std::stoi(run.run_name.args);
    for (const ScaleRow& row : m_rows) {
        const auto counter = run.counters.find(std::string(row.name));
        if (counter == run.counters.end())
            continue;
        const double value = counter->second.value;
        double& kept = m_values[row.name].try_emplace(jobCount, value).first->second;
        kept =
            row.counts == ScaleRow::Counts::least ? std::min(kept, value) : std::max(kept, value);
    }
}

void ScaleTable::Finalize() {
    std::printf("%-46s", "jobs in the list");
    for (const int jobCount : jobCounts)
        std::printf("%12d", jobCount);
    std::printf("   budget at 10000\n");
    for (const ScaleRow& row : m_rows)
        printRow(row);
}

void ScaleTable::printRow(const ScaleRow& row) const {
    const auto values = m_values.find(row.name);
    if (values == m_values.end())
        return;
    std::printf("%-46s", std::string(row.name).c_str());
    for (const int jobCount : jobCounts) {
        const auto value = values->second.find(jobCount);
        if (value == values->second.end())
            std::printf("%12s", "-");
        else
            std::printf("%12.*f", row.decimals, value->second);
    }
    std::printf("   %s\n", std::string(row.budget).c_str());
}

} // namespace boxlift::bench
