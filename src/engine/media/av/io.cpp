#include "engine/media/av/io.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <new>

namespace boxlift::media::av {

namespace {

/// What comes in small pieces is put together in this; the rest passes it by.
constexpr int outputBufferSize = 1 << 15;

std::uint8_t* allocateBuffer(int size) {
    auto* buffer = static_cast<std::uint8_t*>(av_malloc(static_cast<std::size_t>(size)));
    if (!buffer)
        throw std::bad_alloc();
    return buffer;
}

IoContextPtr own(AVIOContext* context) {
    if (!context)
        throw std::bad_alloc();
    return IoContextPtr(context);
}

/// The new position, or a negative code.
std::int64_t resolveSeek(std::int64_t offset, int whence, std::int64_t position,
                         std::int64_t size) {
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
        return size;
    case SEEK_SET:
        break;
    case SEEK_CUR:
        offset += position;
        break;
    case SEEK_END:
        offset += size;
        break;
    default:
        return AVERROR(EINVAL);
    }
    return offset >= 0 ? offset : AVERROR(EINVAL);
}

} // namespace

InputIo::InputIo(std::shared_ptr<const InputFile> file, int bufferSize, std::stop_token stop)
    : m_file(std::move(file)), m_stop(std::move(stop)),
      m_context(own(avio_alloc_context(allocateBuffer(bufferSize), bufferSize, 0, this,
                                       &InputIo::read, nullptr, &InputIo::seek))) {}

bool InputIo::isInterrupted() const {
    return m_stop.stop_requested() || std::chrono::steady_clock::now() > m_deadline;
}

int InputIo::read(void* self, std::uint8_t* buffer, int size) noexcept {
    auto& io = *static_cast<InputIo*>(self);
    if (io.isInterrupted())
        return AVERROR_EXIT;
    const auto count = io.m_file->readAt(
        io.m_position, std::as_writable_bytes(std::span(buffer, static_cast<std::size_t>(size))));
    if (count < 0) {
        io.m_readError = io.m_readError ? io.m_readError : static_cast<int>(-count);
        return AVERROR(static_cast<int>(-count));
    }
    io.m_position += count;
    return count == 0 ? AVERROR_EOF : static_cast<int>(count);
}

std::int64_t InputIo::seek(void* self, std::int64_t offset, int whence) noexcept {
    auto& io = *static_cast<InputIo*>(self);
    const auto result = resolveSeek(offset, whence, io.m_position, io.m_file->size());
    if (result >= 0 && (whence & ~AVSEEK_FORCE) != AVSEEK_SIZE)
        io.m_position = result;
    return result;
}

OutputIo::OutputIo(OutputFile& file, std::stop_token stop)
    : m_file(file), m_writer(file), m_stop(std::move(stop)),
      m_context(own(avio_alloc_context(allocateBuffer(outputBufferSize), outputBufferSize, 1, this,
                                       nullptr, &OutputIo::write, &OutputIo::seek))) {
    m_context->direct = 1;
}

void OutputIo::finishWrites() {
    if (const int error = m_writer.finish(); error && !m_writeError)
        m_writeError = error;
}

int OutputIo::write(void* self, WriteCallbackByte* buffer, int size) noexcept {
    auto& io = *static_cast<OutputIo*>(self);
    if (io.m_stop.stop_requested())
        return AVERROR_EXIT;
    if (const int error = io.write(std::span(buffer, static_cast<std::size_t>(size)))) {
        io.m_writeError = io.m_writeError ? io.m_writeError : error;
        return AVERROR(error);
    }
    io.m_position += size;
    io.m_end = std::max(io.m_end, io.m_position);
    return size;
}

int OutputIo::write(std::span<const std::uint8_t> data) {
    if (m_position < m_tailBegin)
        return m_writer.write(m_position, std::as_bytes(data));
    try {
        keep(data);
        return 0;
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    }
}

void OutputIo::keep(std::span<const std::uint8_t> data) {
    const auto at = static_cast<std::size_t>(m_position - m_tailBegin);
    if (m_tail.size() < at + data.size())
        m_tail.resize(at + data.size());
    std::ranges::copy(data, m_tail.begin() + static_cast<std::ptrdiff_t>(at));
}

std::int64_t OutputIo::seek(void* self, std::int64_t offset, int whence) noexcept {
    auto& io = *static_cast<OutputIo*>(self);
    const auto result = resolveSeek(offset, whence, io.m_position, io.m_end);
    if (result >= 0 && (whence & ~AVSEEK_FORCE) != AVSEEK_SIZE)
        io.m_position = result;
    return result;
}

} // namespace boxlift::media::av
