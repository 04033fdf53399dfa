#pragma once

#include <chrono>
#include <memory>
#include <stop_token>

#include "engine/media/av/handles.h"
#include "engine/media/av/io.h"
#include "engine/media/input_file.h"

namespace boxlift::media::av {

/// How much of a file is read when it is opened.
enum class ProbeDepth {
    header,  ///< The header alone where it tells all; else as `streams`.
    index,   ///< As `header`, to read packets as the container has them: nobody looks into them.
    streams, ///< Some packets of each stream as well, in bounded bytes and time.
};

/// One container that is open for reading. Opens only the formats that we allow, by content; never
/// opens another file. One thread; any number of demuxers share an InputFile.
class Demuxer {
public:
    /// Throws media::Error when the contents are none of the allowed formats or cannot be read,
    /// Cancelled when `stop` asks.
    static std::unique_ptr<Demuxer> open(std::shared_ptr<const InputFile> file, ProbeDepth depth,
                                         std::stop_token stop);

    AVFormatContext& context() { return *m_context; }
    const AVFormatContext& context() const { return *m_context; }
    const std::shared_ptr<const InputFile>& file() const { return m_io.sharedFile(); }
    const std::filesystem::path& path() const { return m_io.file().path(); }

    /// Whether this is the QuickTime and MPEG-4 family.
    bool isMovie() const;
    /// Lets go of the packets that were read when the streams were probed, and of the parsers. No
    /// more is read then.
    void dropPackets() { avformat_flush(m_context.get()); }
    /// The next packet of a stream that is not discarded; false at the end of the file. Throws
    /// media::Error when the file cannot be read, Cancelled when the token asks.
    bool read(AVPacket& packet);

private:
    using Clock = std::chrono::steady_clock;

    Demuxer(std::shared_ptr<const InputFile> file, ProbeDepth depth, std::stop_token stop);
    static int interrupted(void* self) noexcept;
    void openContext(ProbeDepth depth);
    void probe(ProbeDepth depth);
    bool headerTellsAll() const;
    void fail(int code, std::string_view what) const;

    std::stop_token m_stop;
    InputIo m_io;
    InputContextPtr m_context;
};

/// Whether a stream is a still picture that goes with the media (cover art, chapter pictures).
bool isPicture(const AVStream& stream);

/// What the container's index says of a stream's sample; null when there is no such one.
const AVIndexEntry* indexEntry(const AVStream& stream, int number);

} // namespace boxlift::media::av
