#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "support/media_generator.h"
#include "support/temp_folder.h"

namespace boxlift::media::test {

/// A test that makes its sources, in a folder of its own.
class SourceTest : public testing::Test {
protected:
    /// False when an encoder is missing; see MAKE_SOURCE.
    bool make(const boxlift::test::MediaSpec& spec, const char* name = "source") {
        try {
            boxlift::test::makeMedia(path(name), spec);
            return true;
        } catch (const boxlift::test::MissingEncoder& error) {
            m_missing = error.what();
            return false;
        }
    }
    const std::string& missing() const { return m_missing; }

    std::filesystem::path folder() const { return m_folder.path(); }
    std::filesystem::path path(std::string_view name) const { return folder() / name; }
    std::filesystem::path source() const { return path("source"); }
    std::filesystem::path output() const { return path("out"); }

private:
    boxlift::test::TempFolder m_folder;
    std::string m_missing;
};

/// Makes the test's source, or skips the test when an encoder for it is missing.
#define MAKE_SOURCE(...)                                                                           \
    if (!make(__VA_ARGS__))                                                                        \
    GTEST_SKIP() << missing()

inline boxlift::test::MediaSpec mediaOf(const char* format,
                                        std::vector<boxlift::test::VideoSpec> video,
                                        std::vector<boxlift::test::AudioSpec> audio = {}) {
    boxlift::test::MediaSpec spec;
    spec.format = format;
    spec.video = std::move(video);
    spec.audio = std::move(audio);
    return spec;
}
inline boxlift::test::VideoSpec videoOf(const char* codec) {
    boxlift::test::VideoSpec spec;
    spec.codec = codec;
    return spec;
}
inline boxlift::test::AudioSpec audioOf(const char* codec) {
    boxlift::test::AudioSpec spec;
    spec.codec = codec;
    return spec;
}

} // namespace boxlift::media::test
