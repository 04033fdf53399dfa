#include "engine/media/reencode_session.h"

#include "engine/media/muxer.h"
#include "engine/media/packet_source.h"
#include "engine/media/reencode_pipeline.h"
#include "engine/media/reencode_tracks.h"
#include "engine/media/source_check.h"

namespace boxlift::media {

namespace {

/// The share of the progress that is encoding; placing the index takes the rest.
constexpr double encodingShare = 0.97;

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

void ReencodeSession::run(const Settings& settings, std::stop_token stop) {
    PacketSource source(selection(), stop);
    checkIndexedSamples(source.context(), selection().streams, *selection().file);
    checkStatedData(source.context(), *selection().file);
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

std::unique_ptr<FileExportSession> makeReencodeSession(Selection selection, ExportPreset preset,
                                                       std::stop_token stop) {
    return std::make_unique<ReencodeSession>(std::move(selection), preset, std::move(stop));
}

} // namespace boxlift::media
