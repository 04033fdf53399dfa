#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/converter.h"
#include "fakes/fake_factory.h"
#include "fakes/outcome.h"
#include "fakes/recorder.h"

namespace boxlift::fakes {

inline std::vector<media::Time> stamps(std::initializer_list<double> seconds) {
    std::vector<media::Time> result;
    for (const double second : seconds)
        result.push_back(media::Time::fromSeconds(second));
    return result;
}

/// Transcodes an asset of four seconds with two audio tracks from scripts that go well.
class AudioTranscoder : public testing::Test {
protected:
    AudioTranscoder() {
        m_asset->trackList = {videoTrack(fourCharCode("avc1"), {640, 360}), m_first, m_second};
        m_asset->length = media::Time::fromSeconds(4);
        reader().stamps = stamps({0, 1, 2, 3});
    }

    ReaderScript& reader() { return m_factory.reader; }
    WriterScript& writer() { return m_factory.writer; }
    void run(const Converter::Progress& progress, int bitrate = 128000) {
        Converter::transcodeAudio(m_asset, bitrate, "/out/clip.m4a", progress, m_stop.get_token(),
                                  m_factory);
    }
    void run() { run(m_recorder.callback()); }
    std::string outcome() {
        return outcomeOf([&] { run(); });
    }
    bool happened(const std::string& event) const { return m_factory.events.contains(event); }

    FakeFactory m_factory;
    std::shared_ptr<FakeTrack> m_first = audioTrack(fourCharCode("aac "));
    std::shared_ptr<FakeTrack> m_second = audioTrack(fourCharCode("ac-3"));
    std::shared_ptr<FakeAsset> m_asset = std::make_shared<FakeAsset>();
    Recorder m_recorder;
    std::stop_source m_stop;
};

} // namespace boxlift::fakes
