#pragma once

#include <filesystem>
#include <memory>
#include <vector>

#include <gtest/gtest.h>

#include "engine/media/asset_reader.h"
#include "engine/media/error.h"
#include "engine/media/file_asset.h"
#include "support/media_generator.h"

namespace boxlift::test {

/// Opens a file, with no wish to stop.
inline std::shared_ptr<const media::FileAsset> openAsset(const std::filesystem::path& path) {
    return media::FileAsset::open(media::InputFile::open(path), {});
}

/// The kind of a media error that an operation ended with; a failure of the test for anything else.
inline media::ErrorKind errorKind(const std::exception_ptr& error) {
    try {
        if (error)
            std::rethrow_exception(error);
        ADD_FAILURE() << "there is no error";
    } catch (const media::Error& found) {
        return found.kind();
    } catch (const std::exception& found) {
        ADD_FAILURE() << "not a media error: " << found.what();
    }
    return media::ErrorKind::unknown;
}

/// Cuts the end off a file.
inline void truncateFile(const std::filesystem::path& path, double keptFraction) {
    const auto size = static_cast<double>(std::filesystem::file_size(path));
    std::filesystem::resize_file(path, static_cast<std::uintmax_t>(size * keptFraction));
}

/// Interleaved samples of all buffers that are left, which must follow one another without a gap.
inline std::vector<std::int16_t> readAll(media::AssetReader& reader) {
    std::vector<std::int16_t> samples;
    media::Time expected;
    while (const auto buffer = reader.copyNextSampleBuffer()) {
        EXPECT_TRUE(!expected.isValid() || buffer->presentationTimeStamp == expected);
        expected = buffer->presentationTimeStamp +
                   media::Time::fromRate(static_cast<std::int64_t>(buffer->frameCount()), 44100);
        samples.insert(samples.end(), buffer->samples.begin(), buffer->samples.end());
    }
    return samples;
}

} // namespace boxlift::test

/// Makes a file, or skips the test when an encoder is missing.
#define BOXLIFT_MAKE_MEDIA(path, spec)                                                             \
    try {                                                                                          \
        ::boxlift::test::makeMedia(path, spec);                                                    \
    } catch (const ::boxlift::test::MissingEncoder& error) {                                       \
        GTEST_SKIP() << error.what();                                                              \
    }
