#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>

#include <gtest/gtest.h>

#include "engine/media/aac_file_writer.h"
#include "engine/media/audio_files.h"
#include "engine/media/audio_mix_reader.h"
#include "support/temp_folder.h"

namespace boxlift::test {

using Wave = std::function<double(std::size_t)>;

inline constexpr media::AacSettings aac128{44100, 2, 128'000};
inline constexpr media::AacSettings aac256{44100, 2, 256'000};

inline double sine(std::size_t sample) {
    return 0.5 * std::sin(2 * std::numbers::pi * 440 * static_cast<double>(sample) / 44100);
}

inline media::SampleBuffer makeBuffer(std::size_t position, std::size_t frames, const Wave& wave) {
    media::SampleBuffer buffer;
    buffer.presentationTimeStamp =
        media::Time::fromRate(static_cast<std::int64_t>(position), 44100);
    for (std::size_t i = 0; i < frames; ++i)
        for (int channel = 0; channel < 2; ++channel)
            buffer.samples.push_back(
                static_cast<std::int16_t>(std::lround(wave(position + i) * 32767)));
    return buffer;
}

/// Writes sounds into a file of a folder of its own.
class AacWriterTest : public testing::Test {
protected:
    const std::filesystem::path& folder() const { return m_folder.path(); }
    std::filesystem::path path() const { return folder() / "out.m4a"; }
    bool isFolderEmpty() const { return std::filesystem::is_empty(folder()); }

    static bool start(media::AacFileWriter& writer, const media::AacSettings& settings = aac128) {
        EXPECT_TRUE(writer.canAddAudioInput(settings));
        writer.addAudioInput(settings);
        if (!writer.startWriting())
            return false;
        writer.startSession(media::Time::zero());
        return true;
    }

    static void append(media::AacFileWriter& writer, std::size_t frames, const Wave& wave) {
        constexpr std::size_t block = 8192;
        for (std::size_t position = 0; position < frames; position += block)
            writer.append(makeBuffer(position, std::min(block, frames - position), wave));
    }

    /// The sine, for long: a fifth of a second of it fits together with itself.
    static void appendSine(media::AacFileWriter& writer, std::size_t frames) {
        constexpr std::size_t block = 44100 / 5;
        const media::SampleBuffer fifth = makeBuffer(0, block, sine);
        for (std::size_t position = 0; position < frames; position += block) {
            media::SampleBuffer buffer = fifth;
            buffer.presentationTimeStamp =
                media::Time::fromRate(static_cast<std::int64_t>(position), 44100);
            buffer.samples.resize(2 * std::min(block, frames - position));
            writer.append(std::move(buffer));
        }
    }

    void write(std::size_t frames, const Wave& wave, const media::AacSettings& settings = aac256) {
        media::AacFileWriter writer(path());
        ASSERT_TRUE(start(writer, settings));
        append(writer, frames, wave);
        writer.markAsFinished();
        writer.finishWriting();
        ASSERT_EQ(writer.status(), media::AssetWriter::Status::completed);
        EXPECT_EQ(writer.error(), nullptr);
    }

    /// What a player hears of the output.
    std::vector<std::int16_t> readBack() const {
        const auto asset = openAsset(path());
        const auto tracks = asset->loadTracks(media::MediaType::audio);
        media::AudioMixReader reader(asset);
        EXPECT_TRUE(reader.canAddAudioMix(tracks, {}));
        reader.addAudioMix(tracks, {});
        EXPECT_TRUE(reader.startReading());
        return readAll(reader);
    }

private:
    TempFolder m_folder;
};

} // namespace boxlift::test
