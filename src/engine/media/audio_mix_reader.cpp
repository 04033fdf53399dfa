#include "engine/media/audio_mix_reader.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "engine/media/error.h"
#include "engine/media/file_composition.h"
#include "model/cancelled.h"

namespace boxlift::media {

namespace {

constexpr std::size_t bufferFrames = 8192;
constexpr int lowestRate = 1000;
constexpr int highestRate = 384'000;

/// The track of a file that a track of an asset shows; null for any other.
const FileTrack* fileTrack(const AssetTrack& track) {
    if (const auto* composed = dynamic_cast<const FileCompositionTrack*>(&track))
        return composed->source();
    return dynamic_cast<const FileTrack*>(&track);
}

bool isOfAsset(const AssetTrack& track, const Selection& selection) {
    const FileTrack* source = fileTrack(track);
    return source && source->mediaType() == MediaType::audio && source->file() == selection.file &&
           selection.contains(source->streamIndex());
}

bool canDeliver(const LinearPcmSettings& settings) {
    return settings.bitDepth == 16 && !settings.isFloat && !settings.isBigEndian &&
           !settings.isNonInterleaved && settings.channels >= 1 && settings.channels <= 2 &&
           settings.sampleRate >= lowestRate && settings.sampleRate <= highestRate;
}

/// A sample of 16 bits comes out as it went in.
std::int16_t toInteger(float sample) {
    using Limits = std::numeric_limits<std::int16_t>;
    const float scaled = sample * 32768.0F;
    if (!(scaled > static_cast<float>(Limits::min())))
        return std::isnan(scaled) ? std::int16_t{0} : Limits::min();
    if (scaled >= static_cast<float>(Limits::max()))
        return Limits::max();
    return static_cast<std::int16_t>(std::lrint(scaled));
}

} // namespace

AudioMixReader::AudioMixReader(std::shared_ptr<const Asset> asset)
    : m_selection(Selection::of(*asset)) {}

bool AudioMixReader::canAddAudioMix(std::span<const std::shared_ptr<const AssetTrack>> tracks,
                                    const LinearPcmSettings& settings) const {
    return m_selection && m_streams.empty() && status() == Status::unknown && !tracks.empty() &&
           canDeliver(settings) &&
           std::all_of(tracks.begin(), tracks.end(),
                       [this](const auto& track) { return isOfAsset(*track, *m_selection); });
}

void AudioMixReader::addAudioMix(std::span<const std::shared_ptr<const AssetTrack>> tracks,
                                 const LinearPcmSettings& settings) {
    m_settings = settings;
    for (const auto& track : tracks)
        m_streams.push_back(fileTrack(*track)->streamIndex());
}

bool AudioMixReader::startReading() {
    if (status() != Status::unknown || m_streams.empty())
        return false;
    try {
        openTracks();
    } catch (...) {
        endWithCurrentException();
        return false;
    }
    const std::lock_guard lock(m_mutex);
    if (m_status == Status::unknown)
        m_status = Status::reading;
    return m_status == Status::reading;
}

void AudioMixReader::openTracks() {
    const AudioFormat format{m_settings.sampleRate,
                             m_settings.channels == 1 ? AV_CH_LAYOUT_MONO : AV_CH_LAYOUT_STEREO,
                             AV_SAMPLE_FMT_FLT};
    for (const int stream : m_streams)
        m_tracks.push_back(std::make_unique<AudioTrackDecoder>(m_selection->file, stream, format,
                                                               m_stop.get_token()));
    m_track.resize(bufferFrames * static_cast<std::size_t>(m_settings.channels));
}

std::optional<SampleBuffer> AudioMixReader::copyNextSampleBuffer() {
    if (status() != Status::reading)
        return std::nullopt;
    try {
        const std::size_t count = mix();
        if (m_stop.stop_requested())
            throw Cancelled();
        if (count > 0)
            return takeBuffer(count);
        requireSound();
        end(Status::completed, nullptr);
    } catch (...) {
        endWithCurrentException();
    }
    m_tracks.clear();
    return std::nullopt;
}

std::size_t AudioMixReader::mix() {
    std::size_t longest = 0;
    m_sum.assign(m_track.size(), 0.0F);
    for (const auto& track : m_tracks) {
        const std::size_t count = track->read(m_track);
        std::transform(m_track.begin(), m_track.begin() + static_cast<std::ptrdiff_t>(count),
                       m_sum.begin(), m_sum.begin(), std::plus<>());
        longest = std::max(longest, count);
    }
    return longest;
}

void AudioMixReader::requireSound() const {
    if (m_position == 0)
        throw Error(ErrorKind::cannotDecode, "read audio", m_selection->file->path(),
                    "there is no sound in the tracks");
}

SampleBuffer AudioMixReader::takeBuffer(std::size_t count) {
    SampleBuffer buffer;
    buffer.presentationTimeStamp = Time::fromRate(m_position, m_settings.sampleRate);
    buffer.channels = m_settings.channels;
    buffer.samples.resize(count);
    std::transform(m_sum.begin(), m_sum.begin() + static_cast<std::ptrdiff_t>(count),
                   buffer.samples.begin(), toInteger);
    m_position += static_cast<std::int64_t>(buffer.frameCount());
    return buffer;
}

void AudioMixReader::cancelReading() {
    m_stop.request_stop();
    end(Status::cancelled, nullptr);
}

void AudioMixReader::end(Status status, std::exception_ptr error) {
    const std::lock_guard lock(m_mutex);
    if (m_status != Status::unknown && m_status != Status::reading)
        return;
    m_status = status;
    m_error = std::move(error);
}

void AudioMixReader::endWithCurrentException() {
    if (m_stop.stop_requested())
        end(Status::cancelled, nullptr);
    else
        end(Status::failed, std::current_exception());
}

AssetReader::Status AudioMixReader::status() const {
    const std::lock_guard lock(m_mutex);
    return m_status;
}

std::exception_ptr AudioMixReader::error() const {
    const std::lock_guard lock(m_mutex);
    return m_error;
}

} // namespace boxlift::media
