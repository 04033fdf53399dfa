#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <thread>
#include <vector>

#include "engine/media/bounded_queue.h"
#include "engine/media/output_file.h"

namespace boxlift::media {

/// Writes to a file on a thread of its own, so that what is to be written next can be made
/// meanwhile. Small writes that follow each other become large ones. Used by one thread.
class WriteBehind {
public:
    explicit WriteBehind(OutputFile& file);
    /// What still waits is dropped.
    ~WriteBehind();
    WriteBehind(const WriteBehind&) = delete;
    WriteBehind& operator=(const WriteBehind&) = delete;

    /// Takes a copy of the data. 0 or errno, which may be that of an earlier write; after an error
    /// nothing more is written. Waits while as much as may wait does.
    int write(std::int64_t offset, std::span<const std::byte> data) noexcept;
    /// Waits until all is written; from then on the file may be read, and writes are done at once.
    /// 0 or the first errno of all.
    int finish() noexcept;

private:
    struct Block {
        std::int64_t end() const { return offset + static_cast<std::int64_t>(bytes.size()); }

        std::int64_t offset = 0;
        std::vector<std::byte> bytes;
    };

    /// Takes as much as has room in one block; tells how much.
    std::size_t append(std::int64_t offset, std::span<const std::byte> data);
    std::unique_ptr<Block> takeFree();
    void handOver();
    void writeBlocks();

    OutputFile& m_file;
    std::unique_ptr<Block> m_current;
    int m_blocksMade = 0;
    bool m_isFinished = false;
    /// All the blocks fit into either.
    BoundedQueue<std::unique_ptr<Block>> m_full;
    BoundedQueue<std::unique_ptr<Block>> m_free;
    std::atomic<int> m_error = 0;
    std::thread m_thread;
};

} // namespace boxlift::media
