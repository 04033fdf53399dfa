#pragma once

#include <memory>

#include "engine/media/file_export_session.h"
#include "model/export_preset.h"

namespace boxlift::media {

/// Encodes a selection's tracks anew: pictures as H.264, sound as AAC. Opens the source when it
/// starts. An audio-only selection gives its sound alone.
class ReencodeSession : public FileExportSession {
public:
    ReencodeSession(Selection selection, ExportPreset preset, std::stop_token stop = {})
        : FileExportSession(std::move(selection), std::move(stop)), m_preset(preset) {}
    ~ReencodeSession() override;

    std::vector<FileType> supportedFileTypes() const override;

private:
    void run(const Settings& settings, std::stop_token stop) override;

    const ExportPreset m_preset;
};

std::unique_ptr<FileExportSession> makeReencodeSession(Selection selection, ExportPreset preset,
                                                       std::stop_token stop = {});

} // namespace boxlift::media
