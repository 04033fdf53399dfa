#pragma once

#include <vector>

#include "engine/media/muxer.h"
#include "engine/media/packet_source.h"
#include "engine/media/reencode_pipeline.h"
#include "engine/media/selection.h"
#include "model/export_preset.h"

namespace boxlift::media {

/// The tracks of one output that is being encoded anew: which of the source's there are, how far
/// each has come, whether it has come to its end. One thread. Throws media::Error.
class ReencodeTracks {
public:
    ReencodeTracks(PacketSource& source, Muxer& muxer, ReencodePipeline& pipeline)
        : m_source(source), m_muxer(muxer), m_pipeline(pipeline) {}

    /// Adds a selection's tracks to the muxer and to the pipeline. Tracks without any media are
    /// left out where that is no damage; to have none left is an error.
    void add(const Selection& selection, ExportPreset preset);
    /// Writes what the pipeline gave out.
    void write(AVPacket& packet);
    /// How much of all the tracks' time has been written, 0 to 1; meaningless when the durations
    /// are unknown.
    double fraction() const;
    /// Throws when some track has ended before its declared end.
    void checkEnds() const;

private:
    struct Output {
        TimeRange range; ///< Of the source's track.
        Time end;        ///< Of what has been written; invalid before the first packet.
    };

    bool isEmpty(int stream) const;
    void addVideo(int stream, ExportPreset preset, const std::optional<AffineTransform>& turn);
    void addAudio(int stream);
    void addTexts();
    void remember(int stream);

    PacketSource& m_source;
    Muxer& m_muxer;
    ReencodePipeline& m_pipeline;
    std::vector<Output> m_outputs; ///< By the output's number; texts come last and are not here.
};

} // namespace boxlift::media
