#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <stop_token>

#include "engine/media/av/compat.h"
#include "engine/media/av/handles.h"
#include "engine/media/input_file.h"
#include "engine/media/output_file.h"

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

/// FFmpeg's view of an OutputFile: large sequential writes, and reading back what was written for
/// the pass that moves the index to the front. A stop makes every call fail.
class OutputIo {
public:
    OutputIo(OutputFile& file, std::stop_token stop);

    AVIOContext* context() { return m_context.get(); }
    OutputFile& file() { return m_file; }
    /// The first system error that a write met, 0 when none.
    int writeError() const { return m_writeError; }

    /// A second context, for reading the same file from its start. Freed by closeReader().
    AVIOContext* openReader();
    static void closeReader(AVIOContext* reader);
    /// Hears the number of bytes that readers have read.
    void setReadListener(std::function<void(std::int64_t)> listener);

private:
    struct Reader;
    static int write(void* self, WriteCallbackByte* buffer, int size) noexcept;
    static std::int64_t seek(void* self, std::int64_t offset, int whence) noexcept;

    OutputFile& m_file;
    std::stop_token m_stop;
    std::int64_t m_position = 0;
    std::int64_t m_end = 0;
    int m_writeError = 0;
    std::function<void(std::int64_t)> m_readListener;
    IoContextPtr m_context;
};

} // namespace boxlift::media::av
