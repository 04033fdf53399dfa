#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/media/reencoder.h"
#include "support/media_generator.h"
#include "support/temp_folder.h"

namespace boxlift::media::test {

/// A folder of its own with a source that the test makes and, later, the output.
class ReencodeFixture : public testing::Test {
protected:
    /// False when an encoder for the source is missing; `m_missing` then says which.
    bool make(const boxlift::test::MediaSpec& spec) {
        try {
            boxlift::test::makeMedia(source(), spec);
            return true;
        } catch (const boxlift::test::MissingEncoder& missing) {
            m_missing = missing.what();
            return false;
        }
    }

    std::filesystem::path source() const { return m_folder.path() / "source"; }
    std::filesystem::path output() const { return m_folder.path() / "out"; }
    std::vector<std::string> folderContents() const { return contents(m_folder.path()); }

    std::string m_missing;

private:
    boxlift::test::TempFolder m_folder;
};

} // namespace boxlift::media::test
