#include "engine/media/reencode_session.h"

#include <algorithm>

#include "engine/media/muxer.h"
#include "engine/media/packet_source.h"
#include "engine/media/reencode_pipeline.h"
#include "engine/media/reencode_tracks.h"
#include "engine/media/source_check.h"

namespace boxlift::media {

namespace {

/// The share of the work that is encoding; moving the index to the front takes the rest.
constexpr double encodingShare = 0.97;
/// Where progress stands when all but the very end is done.
constexpr double almostDone = 0.999;

} // namespace

ReencodeSession::~ReencodeSession() {
    join();
}

std::vector<FileType> ReencodeSession::supportedFileTypes() const {
    std::vector<FileType> types{FileType::AVFileTypeMPEG4, FileType::AVFileTypeQuickTimeMovie};
    if (!selection().hasVideo)
        types.push_back(FileType::AVFileTypeAppleM4A);
    return types;
}

float ReencodeSession::progress() const {
    const float standing = FileExportSession::progress();
    const std::lock_guard lock(m_muxerMutex);
    if (!m_finishing)
        return standing;
    const double finished =
        encodingShare + (almostDone - encodingShare) * m_finishing->finishedFraction();
    return std::max(standing, static_cast<float>(finished));
}

void ReencodeSession::run(const Settings& settings, std::stop_token stop) {
    PacketSource source(selection(), stop);
    checkIndexedSamples(source.context(), selection().streams, *selection().file);
    Muxer muxer(settings.output, settings.type,
                settings.optimize ? IndexPlace::front : IndexPlace::end, stop);
    ReencodePipeline pipeline(source, stop);
    ReencodeTracks tracks(source, muxer, pipeline);
    tracks.add(selection(), m_preset);
    muxer.copyFileMetadata(source.context(), source.start());
    muxer.writeHeader();
    pipeline.start();
    while (const av::PacketPtr packet = pipeline.next()) {
        tracks.write(*packet);
        setProgress(encodingShare *
                    (source.isDeclared() ? tracks.fraction() : pipeline.fractionRead()));
    }
    tracks.checkEnds();
    finish(muxer);
}

void ReencodeSession::finish(Muxer& muxer) {
    const auto show = [this](const Muxer* finishing) {
        const std::lock_guard lock(m_muxerMutex);
        m_finishing = finishing;
    };
    show(&muxer);
    try {
        muxer.finish();
    } catch (...) {
        show(nullptr);
        throw;
    }
    setProgress(almostDone);
    show(nullptr);
}

std::unique_ptr<ExportSession> makeReencodeSession(Selection selection, ExportPreset preset) {
    return std::make_unique<ReencodeSession>(std::move(selection), preset);
}

} // namespace boxlift::media
