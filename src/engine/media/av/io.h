#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <stop_token>
#include <utility>
#include <vector>

#include "engine/media/av/compat.h"
#include "engine/media/av/handles.h"
#include "engine/media/input_file.h"
#include "engine/media/output_file.h"
#include "engine/media/write_behind.h"

namespace boxlift::media::av {

/// FFmpeg's view of an InputFile, with a position of its own. A stop makes every read fail.
class InputIo {
public:
    InputIo(std::shared_ptr<const InputFile> file, int bufferSize, std::stop_token stop);

    AVIOContext* context() { return m_context.get(); }
    /// Reads fail after this.
    void setDeadline(std::chrono::steady_clock::time_point deadline) { m_deadline = deadline; }
    /// Whether a stop was asked for or the deadline has passed.
    bool isInterrupted() const;
    const InputFile& file() const { return *m_file; }
    const std::shared_ptr<const InputFile>& sharedFile() const { return m_file; }
    /// The first system error that a read met, 0 when none: demuxers often swallow it.
    int readError() const { return m_readError; }

private:
    static int read(void* self, std::uint8_t* buffer, int size) noexcept;
    static std::int64_t seek(void* self, std::int64_t offset, int whence) noexcept;

    std::shared_ptr<const InputFile> m_file;
    std::stop_token m_stop;
    std::int64_t m_position = 0;
    int m_readError = 0;
    std::chrono::steady_clock::time_point m_deadline = std::chrono::steady_clock::time_point::max();
    IoContextPtr m_context;
};

/// FFmpeg's view of an OutputFile: large sequential writes, on a thread of their own. A stop makes
/// every call fail.
class OutputIo {
public:
    OutputIo(OutputFile& file, std::stop_token stop);

    AVIOContext* context() { return m_context.get(); }
    OutputFile& file() { return m_file; }
    /// Waits for what is still being written. Needed before the file is read or synced.
    void finishWrites();
    /// The first system error that a write met, 0 when none; that of the last ones is known after
    /// finishWrites().
    int writeError() const { return m_writeError; }

    /// From here on what is written behind the end of the file stays in memory instead.
    void keepTail() { m_tailBegin = m_end; }
    /// Where that end is; meaningless before keepTail().
    std::int64_t tailBegin() const { return m_tailBegin; }
    std::vector<std::uint8_t> takeTail() { return std::move(m_tail); }

private:
    static int write(void* self, WriteCallbackByte* buffer, int size) noexcept;
    static std::int64_t seek(void* self, std::int64_t offset, int whence) noexcept;
    int write(std::span<const std::uint8_t> data);
    void keep(std::span<const std::uint8_t> data);

    OutputFile& m_file;
    WriteBehind m_writer;
    std::stop_token m_stop;
    std::int64_t m_position = 0;
    std::int64_t m_end = 0;
    int m_writeError = 0;
    std::int64_t m_tailBegin = std::numeric_limits<std::int64_t>::max();
    std::vector<std::uint8_t> m_tail;
    IoContextPtr m_context;
};

} // namespace boxlift::media::av
