#pragma once

#include <memory>
#include <mutex>

#include "engine/media/file_export_session.h"
#include "model/export_preset.h"

namespace boxlift::media {

class Muxer;

/// Encodes a selection's tracks anew: pictures as H.264, sound as AAC. Opens the source when it
/// starts. An audio-only selection gives its sound alone.
class ReencodeSession : public FileExportSession {
public:
    ReencodeSession(Selection selection, ExportPreset preset)
        : FileExportSession(std::move(selection)), m_preset(preset) {}
    ~ReencodeSession() override;

    std::vector<FileType> supportedFileTypes() const override;
    float progress() const override;

private:
    void run(const Settings& settings, std::stop_token stop) override;
    void finish(Muxer& muxer);

    const ExportPreset m_preset;
    mutable std::mutex m_muxerMutex;
    /// While it finishes: part of the progress comes from it.
    const Muxer* m_finishing = nullptr;
};

std::unique_ptr<ExportSession> makeReencodeSession(Selection selection, ExportPreset preset);

} // namespace boxlift::media
