#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/temp_folder.h"

namespace boxlift::test {

/// Runs of boxlift-drive over a few short sources: one is copied, one re-encoded, one transcoded.
class DriveRuns : public testing::Test {
protected:
    DriveRuns();

    std::vector<std::string> command(const std::filesystem::path& outputDir) const;
    std::filesystem::path newFolder(const std::string& name) const;

    /// The files of an undisturbed run.
    const std::map<std::string, std::string>& whole() const { return m_whole; }
    double seconds() const { return m_seconds; }

    /// Whatever stands in `folder` under a name that people see is one of the whole files, under
    /// its own name or a counted one.
    void expectWholeFilesOnly(const std::filesystem::path& folder) const;
    static int hiddenCount(const std::filesystem::path& folder);

    const TempFolder m_folder;

private:
    std::vector<std::string> m_sources;
    std::map<std::string, std::string> m_whole;
    double m_seconds = 0;
};

} // namespace boxlift::test
