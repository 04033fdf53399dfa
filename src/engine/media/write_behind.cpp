#include "engine/media/write_behind.h"

#include <algorithm>
#include <cerrno>
#include <new>
#include <system_error>

#include "engine/media/thread_name.h"

namespace boxlift::media {

namespace {

/// Large enough to keep the number of system calls small.
constexpr std::size_t blockSize = 1 << 19;
/// One is filled, one is written; the others even out the pace of both.
constexpr int mostBlocks = 4;

} // namespace

WriteBehind::WriteBehind(OutputFile& file) : m_file(file), m_full(mostBlocks), m_free(mostBlocks) {}

WriteBehind::~WriteBehind() {
    m_full.abort();
    if (m_thread.joinable())
        m_thread.join();
}

int WriteBehind::write(std::int64_t offset, std::span<const std::byte> data) noexcept {
    if (m_isFinished)
        return m_file.writeAt(offset, data);
    try {
        while (!data.empty() && m_error == 0) {
            const std::size_t taken = append(offset, data);
            offset += static_cast<std::int64_t>(taken);
            data = data.subspan(taken);
        }
        return m_error;
    } catch (const std::bad_alloc&) {
        return ENOMEM;
    } catch (const std::system_error& failure) {
        return failure.code().value();
    }
}

std::size_t WriteBehind::append(std::int64_t offset, std::span<const std::byte> data) {
    if (m_current && m_current->end() != offset)
        handOver();
    if (!m_current) {
        m_current = takeFree();
        m_current->offset = offset;
    }
    std::vector<std::byte>& bytes = m_current->bytes;
    const std::size_t taken = std::min(data.size(), blockSize - bytes.size());
    bytes.insert(bytes.end(), data.begin(), data.begin() + static_cast<std::ptrdiff_t>(taken));
    if (bytes.size() == blockSize)
        handOver();
    return taken;
}

std::unique_ptr<WriteBehind::Block> WriteBehind::takeFree() {
    if (m_blocksMade == mostBlocks)
        return std::move(*m_free.pop());
    auto block = std::make_unique<Block>();
    block->bytes.reserve(blockSize);
    ++m_blocksMade;
    return block;
}

void WriteBehind::handOver() {
    if (!m_thread.joinable())
        m_thread = std::thread([this] { writeBlocks(); });
    m_full.push(std::move(m_current));
}

void WriteBehind::writeBlocks() {
    setThreadName("boxlift.disk");
    while (auto next = m_full.pop()) {
        std::unique_ptr<Block>& block = *next;
        if (m_error == 0)
            m_error = m_file.writeAt(block->offset, block->bytes);
        block->bytes.clear();
        m_free.push(std::move(block));
    }
}

int WriteBehind::finish() noexcept {
    m_full.close();
    if (m_thread.joinable())
        m_thread.join();
    if (m_current && m_error == 0)
        m_error = m_file.writeAt(m_current->offset, m_current->bytes);
    m_current.reset();
    m_isFinished = true;
    return m_error;
}

} // namespace boxlift::media
