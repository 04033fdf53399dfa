#include "engine/media/passthrough_session.h"

#include <algorithm>
#include <array>
#include <span>
#include <string>

#include "engine/media/av/check.h"
#include "engine/media/av/compat.h"
#include "engine/media/av/conversion.h"
#include "engine/media/decoding_lead.h"
#include "engine/media/error.h"
#include "engine/media/expected_samples.h"
#include "engine/media/muxer.h"
#include "engine/media/passthrough_rules.h"
#include "engine/media/passthrough_track.h"
#include "engine/media/source_check.h"
#include "engine/media/stream_copy.h"

namespace boxlift::media {

namespace {

constexpr std::array allTypes{FileType::AVFileTypeMPEG4, FileType::AVFileTypeQuickTimeMovie,
                              FileType::AVFileTypeAppleM4A};

/// The share of the work that moving the media out of the index's way takes.
constexpr double indexShare = 0.25;

void turn(AVStream& stream, const AffineTransform& transform) {
    std::uint8_t* data =
        av::newStreamSideData(stream, AV_PKT_DATA_DISPLAYMATRIX, 9 * sizeof(std::int32_t));
    if (!data)
        throw std::bad_alloc();
    av::toDisplayMatrix(transform,
                        std::span<std::int32_t, 9>(reinterpret_cast<std::int32_t*>(data), 9));
}

} // namespace

PassthroughSession::PassthroughSession(Selection chosen, std::stop_token stop)
    : FileExportSession(std::move(chosen), std::move(stop)), m_source(selection(), stopToken()) {}

PassthroughSession::~PassthroughSession() {
    join();
}

std::vector<FileType> PassthroughSession::supportedFileTypes() const {
    std::vector<FileType> types;
    std::copy_if(allTypes.begin(), allTypes.end(), std::back_inserter(types),
                 [this](FileType type) { return supports(type); });
    return types;
}

std::vector<int> PassthroughSession::streamsFor(FileType type) const {
    std::vector<int> streams = selection().streams;
    std::erase_if(streams, [&](int index) {
        return passthrough_rules::leavesOut(type, m_source.stream(index).codecpar->codec_type);
    });
    return streams;
}

bool PassthroughSession::supports(FileType type) const {
    // Without time stamps nothing can be put in its place.
    if (m_source.context().iformat->flags & AVFMT_NOTIMESTAMPS)
        return false;
    std::vector<const AVStream*> streams;
    for (const int index : streamsFor(type))
        streams.push_back(&m_source.stream(index));
    const bool accepted = std::all_of(streams.begin(), streams.end(), [&](const AVStream* stream) {
        return !m_source.isSpliced(stream->index) &&
               passthrough_rules::accepts(type, *stream, m_source.isMovie());
    });
    return accepted && !streams.empty() && canMux(type, streams);
}

std::vector<int> PassthroughSession::subtitlesFor(FileType type) const {
    std::vector<int> subtitles;
    if (!selection().isWhole || type == FileType::AVFileTypeAppleM4A)
        return subtitles;
    for (const int index : m_source.otherStreams())
        if (m_source.stream(index).codecpar->codec_id == AV_CODEC_ID_MOV_TEXT)
            subtitles.push_back(index);
    return subtitles;
}

void PassthroughSession::run(const Settings& settings, std::stop_token stop) {
    const std::vector<int> media = streamsFor(settings.type);
    checkIndexedSamples(m_source.context(), media, *selection().file);
    checkStatedData(m_source.context(), *selection().file);
    Muxer muxer(settings.output, settings.type,
                settings.optimize ? IndexPlace::front : IndexPlace::end, stop);
    std::map<int, PassthroughTrack> tracks;
    for (const int index : selection().streams)
        m_source.ignore(index);
    for (const int index : media)
        addTrack(muxer, tracks, index);
    for (const int index : subtitlesFor(settings.type))
        addTrack(muxer, tracks, index);
    m_source.trustIndex(stop);
    applyTransforms(muxer, tracks);
    muxer.copyFileMetadata(m_source.context(), m_source.start());
    muxer.writeHeader();
    copyPackets(muxer, tracks, muxer.isRoomCertain() ? 1 : 1 - indexShare);
    checkEnds(media, tracks);
    finish(muxer);
}

void PassthroughSession::addTrack(Muxer& muxer, std::map<int, PassthroughTrack>& tracks,
                                  int index) {
    m_source.select(index);
    const AVStream& source = m_source.stream(index);
    AVStream& stream = muxer.addStream();
    copyStreamDescription(stream, source);
    muxer.expect(stream.index, copiedSamples(m_source, index));
    stream.codecpar->codec_tag =
        passthrough_rules::codecTag(muxer.type(), source, m_source.isMovie());
    if (const auto name = passthrough_rules::entryName(source))
        muxer.setEntryName(stream.index, *name);
    PassthroughTrack& track =
        tracks.emplace(index, PassthroughTrack(source, stream.index, m_source.path()))
            .first->second;
    if (!m_source.isMovie()) {
        track.skipToKey();
        return;
    }
    const TimeRange& range = m_source.range(index);
    track.setLateStart(av::toTimestamp(range.start, source.time_base));
    track.setEnd(range.end());
    // Of reordered pictures more are copied than the edits show. What was moved keeps its length.
    if (m_source.start() == Time::zero() && m_source.shownEnd(index).isValid())
        muxer.setShownEnd(stream.index, m_source.shownEnd(index));
    if (source.codecpar->video_delay <= 0)
        return;
    track.setDecodingLead(decodingLead(selection().file, index, stopToken()));
    if (m_source.isIndexed())
        track.stretchLast();
}

void PassthroughSession::checkEnds(const std::vector<int>& media,
                                   const std::map<int, PassthroughTrack>& tracks) const {
    const bool isEmpty = std::none_of(media.begin(), media.end(),
                                      [&](int index) { return tracks.at(index).hasMedia(); });
    if (isEmpty)
        throw Error(ErrorKind::cannotDecode, "copy tracks", m_source.path(), "there is no media");
    for (const int index : media)
        tracks.at(index).checkEnd(m_source.range(index).end(), m_source.isDeclared());
}

void PassthroughSession::applyTransforms(Muxer& muxer, std::map<int, PassthroughTrack>& tracks) {
    for (std::size_t i = 0; i < selection().streams.size(); ++i) {
        const auto track = tracks.find(selection().streams[i]);
        if (selection().transforms[i] && track != tracks.end())
            turn(muxer.stream(track->second.outputIndex()), *selection().transforms[i]);
    }
}

void PassthroughSession::copyPackets(Muxer& muxer, std::map<int, PassthroughTrack>& tracks,
                                     double share) {
    const av::PacketPtr packet = av::makePacket();
    while (m_source.next(*packet)) {
        const av::PacketUnref guard{*packet};
        PassthroughTrack& track = tracks.at(packet->stream_index);
        setProgress(m_source.fraction(*packet) * share);
        if (track.prepare(*packet, muxer.stream(track.outputIndex()).time_base))
            muxer.write(*packet);
    }
}

} // namespace boxlift::media
