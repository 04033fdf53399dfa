#include <chrono>
#include <future>
#include <thread>
#include <utility>
#include <vector>

#include "engine/cancellation.h"
#include "engine/converter.h"
#include "engine/failure.h"
#include "engine/media/thread_name.h"

namespace boxlift::Converter {

namespace {

using std::chrono_literals::operator""ms;

constexpr media::LinearPcmSettings decodedFormat{
    .sampleRate = 44100,
    .channels = 2,
    .bitDepth = 16,
    .isFloat = false,
    .isBigEndian = false,
    .isNonInterleaved = false,
};

constexpr media::AacSettings encodedFormat(int bitrate) {
    return {.sampleRate = 44100, .channels = 2, .bitRate = bitrate};
}

/// What fractions are parts of, in seconds: never so little that a division by it says nothing.
/// An unknown duration is not a number, which no comparison holds for.
double divisor(media::Time duration) {
    constexpr double least = 0.001;
    const double seconds = duration.seconds();
    return seconds > least ? seconds : least;
}

std::unique_ptr<media::AssetReader>
makeReader(const std::shared_ptr<const media::Asset>& asset,
           const std::vector<std::shared_ptr<const media::AssetTrack>>& tracks,
           const media::Factory& factory) {
    auto reader = factory.makeAssetReader(asset);
    if (!reader->canAddAudioMix(tracks, decodedFormat))
        throw ConvertError("Couldn't read this file's audio.");
    reader->addAudioMix(tracks, decodedFormat);
    return reader;
}

std::unique_ptr<media::AssetWriter> makeWriter(const media::Asset& source, int bitrate,
                                               const std::filesystem::path& output,
                                               const media::Factory& factory) {
    auto writer = factory.makeAssetWriter(output, FileType::AVFileTypeAppleM4A);
    const media::AacSettings settings = encodedFormat(bitrate);
    if (!writer->canAddAudioInput(settings))
        throw ConvertError("Couldn't write AAC audio.");
    writer->addAudioInput(settings);
    writer->copyMetadata(source);
    writer->setOverallDurationHint(source.duration());
    return writer;
}

void start(media::AssetReader& reader, media::AssetWriter& writer) {
    if (!reader.startReading())
        throwFailure(reader.error(), "Couldn't read audio.");
    if (!writer.startWriting())
        throwFailure(writer.error(), "Couldn't start writing.");
    writer.startSession(media::Time::zero());
}

/// Moves decoded buffers from a reader to a writer. Lives on the awaiting thread, runs on its own.
class Pump {
public:
    Pump(media::AssetReader& reader, media::AssetWriter& writer, double duration,
         const Progress& progress, std::stop_token stop)
        : m_reader(reader), m_writer(writer), m_duration(duration), m_progress(progress),
          m_stop(std::move(stop)) {}

    /// True when everything was read. Throws what the progress callback throws.
    bool run() {
        while (!m_stop.stop_requested()) {
            if (!m_writer.waitUntilReadyForMoreMediaData(50ms))
                continue;
            auto buffer = m_reader.copyNextSampleBuffer();
            if (!buffer) {
                m_writer.markAsFinished();
                if (m_reader.status() != media::AssetReader::Status::completed)
                    return false;
                reportUntilEncoded();
                return true;
            }
            pass(std::move(*buffer));
        }
        m_reader.cancelReading();
        m_writer.markAsFinished();
        return false;
    }

private:
    void pass(media::SampleBuffer buffer) {
        const media::Time time = buffer.presentationTimeStamp;
        // Whether it was taken need not be known: a writer that failed says so when it finishes.
        m_writer.append(std::move(buffer));
        // A writer that works on several stretches at once takes buffers long before it needs them.
        const auto encoded = m_writer.encodedTime();
        report(encoded && *encoded < time ? *encoded : time);
    }

    void reportUntilEncoded() {
        while (!m_stop.stop_requested() && !m_writer.waitUntilEncoded(50ms))
            if (const auto encoded = m_writer.encodedTime())
                report(*encoded);
    }

    void report(media::Time time) {
        const double fraction = time.seconds() / m_duration;
        // Capped by silence: 1.0 is said once, when the file is finished.
        if (fraction < 1.0)
            m_progress(fraction);
    }

    media::AssetReader& m_reader;
    media::AssetWriter& m_writer;
    double m_duration;
    const Progress& m_progress;
    std::stop_token m_stop;
};

/// Runs the pump on a thread of its own; what it throws is thrown here.
bool runOnAudioThread(Pump& pump) {
    std::packaged_task<bool()> task([&pump] {
        media::setThreadName("boxlift.audio");
        return pump.run();
    });
    auto everythingRead = task.get_future();
    std::thread(std::move(task)).join();
    return everythingRead.get();
}

void pumpAll(media::AssetReader& reader, media::AssetWriter& writer, double duration,
             const Progress& progress, const std::stop_token& stop) {
    Pump pump(reader, writer, duration, progress, stop);
    try {
        const bool everythingRead = runOnAudioThread(pump);
        throwIfStopped(stop);
        if (!everythingRead)
            throwFailure(reader.error(), "Reading audio failed.");
    } catch (...) {
        writer.cancelWriting();
        throw;
    }
}

/// Whether a stop came in time is the writer's word: a file that has its name stays.
void finish(media::AssetWriter& writer, const std::stop_token& stop) {
    const std::stop_callback cancel(stop, [&writer] { writer.cancelWriting(); });
    writer.finishWriting();
    if (writer.status() != media::AssetWriter::Status::completed)
        throwFailure(writer.error(), "Writing audio failed.");
}

} // namespace

void transcodeAudio(std::shared_ptr<const media::Asset> asset, int bitrate,
                    const std::filesystem::path& output, const Progress& progress,
                    std::stop_token stop, const media::Factory& factory) {
    cancellable(stop, [&] {
        const auto tracks = asset->loadTracks(media::MediaType::audio);
        const double duration = divisor(asset->duration());
        const auto reader = makeReader(asset, tracks, factory);
        const auto writer = makeWriter(*asset, bitrate, output, factory);
        // The pump asks the token between buffers; what takes longer is cut short from here.
        const std::stop_callback cancel(stop, [&reader] { reader->cancelReading(); });
        start(*reader, *writer);
        pumpAll(*reader, *writer, duration, progress, stop);
        finish(*writer, stop);
    });
    progress(1.0);
}

} // namespace boxlift::Converter
