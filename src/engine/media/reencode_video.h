#pragma once

#include <optional>

#include "engine/media/asset.h"
#include "engine/media/packet_source.h"
#include "engine/media/reencode_pipeline.h"
#include "model/export_preset.h"

namespace boxlift::media {

/// The stages for one of the source's tracks of pictures, ready to run. Throws media::Error when
/// its codec is missing or its pictures are unknown.
ReencodePipeline::VideoStages makeVideoStages(const PacketSource& source, int stream,
                                              ExportPreset preset);

/// Says in `to` (whose size is known) how its pictures are turned for display: as `transform` has
/// it, else as the source's stream does. The turn alone counts; the place follows from the size.
void setOrientation(AVStream& to, const AVStream& from,
                    const std::optional<AffineTransform>& transform);

/// Bits per second of a stream of pictures, 0 when unknown.
std::int64_t sourceVideoRate(const AVFormatContext& context, const AVStream& stream);

} // namespace boxlift::media
