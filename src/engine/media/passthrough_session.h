#pragma once

#include <map>

#include "engine/media/file_export_session.h"
#include "engine/media/packet_source.h"
#include "engine/media/passthrough_track.h"

namespace boxlift::media {

class Muxer;

/// Copies the compressed samples of a selection into a new container.
class PassthroughSession : public FileExportSession {
public:
    /// Opens the source anew. Throws media::Error.
    explicit PassthroughSession(Selection selection, std::stop_token stop = {});
    ~PassthroughSession() override;

    std::vector<FileType> supportedFileTypes() const override;

private:
    void run(const Settings& settings, std::stop_token stop) override;
    bool supports(FileType type) const;
    /// The streams of the selection that a file of this type takes.
    std::vector<int> streamsFor(FileType type) const;
    std::vector<int> subtitlesFor(FileType type) const;
    void addTrack(Muxer& muxer, std::map<int, PassthroughTrack>& tracks, int index);
    /// Throws media::Error when tracks end too early or nothing was copied.
    void checkEnds(const std::vector<int>& media,
                   const std::map<int, PassthroughTrack>& tracks) const;
    void applyTransforms(Muxer& muxer, std::map<int, PassthroughTrack>& tracks);
    /// Fills `share` of the progress.
    void copyPackets(Muxer& muxer, std::map<int, PassthroughTrack>& tracks, double share);

    PacketSource m_source;
};

} // namespace boxlift::media
