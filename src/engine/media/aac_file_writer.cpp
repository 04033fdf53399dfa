#include "engine/media/aac_file_writer.h"

#include "engine/media/av/demuxer.h"
#include "engine/media/error.h"
#include "engine/media/selection.h"
#include "engine/media/thread_name.h"
#include "engine/media/timeline.h"

namespace boxlift::media {

namespace {

/// What is asked of one channel of an AAC-LC track, in bit/s.
constexpr std::int64_t lowestChannelRate = 32'000;
constexpr std::int64_t lowestChannelRateBelow32kHz = 8'000;
constexpr std::int64_t highestChannelRate = 160'000;

std::uint64_t channelMask(int channels) {
    return channels == 1 ? AV_CH_LAYOUT_MONO : AV_CH_LAYOUT_STEREO;
}

} // namespace

AacFileWriter::AacFileWriter(const OutputPlace& output, unsigned cores)
    : m_output(output), m_cores(cores) {}

AacFileWriter::~AacFileWriter() {
    cancelWriting();
    if (m_thread.joinable())
        m_thread.join();
}

bool AacFileWriter::canAddAudioInput(const AacSettings& settings) const {
    if (m_settings || settings.channels < 1 || settings.channels > 2 ||
        !AudioEncoder::hasSampleRate(settings.sampleRate))
        return false;
    const std::int64_t lowest =
        settings.sampleRate < 32000 ? lowestChannelRateBelow32kHz : lowestChannelRate;
    return settings.bitRate >= lowest * settings.channels &&
           settings.bitRate <= highestChannelRate * settings.channels &&
           settings.bitRate <= AudioEncoder::highestBitRate(settings.sampleRate, settings.channels);
}

void AacFileWriter::addAudioInput(const AacSettings& settings) {
    m_settings = settings;
}

void AacFileWriter::copyMetadata(const Asset& source) {
    if (const auto selection = Selection::of(source))
        m_metadataSource = selection->file;
}

void AacFileWriter::setOverallDurationHint(Time duration) {
    m_durationHint = duration;
}

bool AacFileWriter::startWriting() {
    if (status() != Status::unknown || !m_settings)
        return false;
    try {
        open();
    } catch (...) {
        endWithCurrentException();
        return false;
    }
    const std::lock_guard lock(m_mutex);
    if (m_status != Status::unknown)
        return false;
    m_status = Status::writing;
    m_encoder->start();
    m_thread = std::thread([this] { muxAll(); });
    return true;
}

void AacFileWriter::open() {
    m_muxer = std::make_unique<Muxer>(m_output, FileType::AVFileTypeAppleM4A, IndexPlace::end,
                                      m_stop.get_token());
    const AudioEncoder::Settings settings{m_settings->sampleRate, channelMask(m_settings->channels),
                                          m_settings->bitRate};
    AVStream& stream = m_muxer->addStream();
    AudioEncoder(settings, m_output.path).describe(stream);
    stream.disposition = AV_DISPOSITION_DEFAULT;
    m_streamIndex = stream.index;
    m_muxer->gatherSamples(m_streamIndex);
    if (m_metadataSource)
        copyFileMetadata();
    m_muxer->writeHeader();
    const std::lock_guard lock(m_mutex);
    m_encoder = std::make_unique<StretchedEncoder>(
        settings, planStretches(m_durationHint, settings.sampleRate, m_cores), m_output.path);
}

void AacFileWriter::copyFileMetadata() {
    // The header alone does not tell the size of the cover, which the muxer wants to know.
    const auto source =
        av::Demuxer::open(m_metadataSource, av::ProbeDepth::streams, m_stop.get_token());
    const Timeline timeline = Timeline::of(*source, m_stop.get_token());
    m_muxer->copyFileMetadata(source->context(), timeline.fileStart());
}

void AacFileWriter::startSession(Time atSourceTime) {
    m_sessionStart = atSourceTime;
}

bool AacFileWriter::isReadyForMoreMediaData() const {
    return !m_encoder || m_encoder->isPushImmediate();
}

bool AacFileWriter::waitUntilReadyForMoreMediaData(std::chrono::milliseconds timeout) {
    return !m_encoder || m_encoder->waitForRoom(timeout);
}

bool AacFileWriter::append(SampleBuffer buffer) {
    if (status() != Status::writing || buffer.channels != m_settings->channels)
        return false;
    const Time at = buffer.presentationTimeStamp - m_sessionStart;
    return m_encoder->push(std::move(buffer), at.toRate(m_settings->sampleRate));
}

void AacFileWriter::markAsFinished() {
    if (m_encoder)
        m_encoder->close();
}

std::optional<Time> AacFileWriter::encodedTime() const {
    if (!m_encoder)
        return std::nullopt;
    return m_sessionStart + Time::fromRate(m_encoder->encodedCount(), m_settings->sampleRate);
}

bool AacFileWriter::waitUntilEncoded(std::chrono::milliseconds timeout) {
    return !m_encoder || m_encoder->waitUntilTaken(timeout);
}

void AacFileWriter::muxAll() {
    setThreadName("boxlift.write");
    try {
        while (const av::PacketPtr packet = m_encoder->next())
            mux(*packet);
    } catch (...) {
        endWithCurrentException();
        m_encoder->abort();
    }
}

void AacFileWriter::mux(AVPacket& packet) {
    packet.stream_index = m_streamIndex;
    av_packet_rescale_ts(&packet, {1, m_settings->sampleRate},
                         m_muxer->stream(m_streamIndex).time_base);
    m_muxer->write(packet);
    m_hasSamples = true;
}

void AacFileWriter::finishWriting() {
    if (!beginFinishing())
        return;
    m_encoder->close();
    m_thread.join();
    try {
        if (status() == Status::writing)
            publish();
    } catch (...) {
        endWithCurrentException();
    }
    m_muxer.reset();
}

void AacFileWriter::publish() {
    // Of a track without samples the muxer would write nothing at all.
    if (!m_hasSamples && !m_stop.stop_requested())
        throw Error(ErrorKind::cannotEncode, "finish output", m_output.path, "no samples came");
    m_muxer->finish();
    end(Status::completed, nullptr);
}

bool AacFileWriter::beginFinishing() {
    const std::lock_guard lock(m_mutex);
    const bool begins = m_status == Status::writing && !m_isFinishing;
    m_isFinishing = m_isFinishing || begins;
    return begins;
}

void AacFileWriter::cancelWriting() {
    StretchedEncoder* encoder = nullptr;
    {
        const std::lock_guard lock(m_mutex);
        // What is being finished may have its name already: finishWriting() tells how it ended.
        if ((m_status == Status::unknown || m_status == Status::writing) && !m_isFinishing)
            m_status = Status::cancelled;
        encoder = m_encoder.get();
    }
    // Only now: an append that is let go finds the reason in status().
    m_stop.request_stop();
    if (encoder)
        encoder->abort();
}

void AacFileWriter::end(Status status, std::exception_ptr error) {
    const std::lock_guard lock(m_mutex);
    if (m_status != Status::unknown && m_status != Status::writing)
        return;
    m_status = status;
    m_error = std::move(error);
}

void AacFileWriter::endWithCurrentException() {
    if (m_stop.stop_requested())
        end(Status::cancelled, nullptr);
    else
        end(Status::failed, std::current_exception());
}

AssetWriter::Status AacFileWriter::status() const {
    const std::lock_guard lock(m_mutex);
    return m_status;
}

std::exception_ptr AacFileWriter::error() const {
    const std::lock_guard lock(m_mutex);
    return m_error;
}

} // namespace boxlift::media
