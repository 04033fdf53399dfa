#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

namespace boxlift::media {

/// A regular file that is open for reading. It has no position: any number of readers share it,
/// on any thread. Its size is the one that it had when it was opened.
class InputFile {
public:
    /// Opens without blocking, whatever stands there. Throws media::Error (sourceUnreadable) when
    /// it is not a regular file or cannot be read.
    static std::shared_ptr<const InputFile> open(const std::filesystem::path& path);
    /// Takes over `descriptor`, which is closed even when this throws. `path` is for messages only.
    static std::shared_ptr<const InputFile> adopt(int descriptor,
                                                  const std::filesystem::path& path);

    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    const std::filesystem::path& path() const { return m_path; }
    /// Stays this object's.
    int descriptor() const { return m_descriptor; }
    /// Bytes.
    std::int64_t size() const { return m_size; }
    /// Number of bytes read, less than asked for only at the end of the file; -errno on failure.
    /// A file that has become shorter than size() gives -EIO.
    std::int64_t readAt(std::int64_t offset, std::span<std::byte> into) const noexcept;
    /// Tells the system that all of it will be read, in order.
    void expectSequentialReading() const noexcept;

private:
    InputFile(int descriptor, const std::filesystem::path& path)
        : m_descriptor(descriptor), m_path(path) {}

    int m_descriptor;
    std::int64_t m_size = 0;
    std::filesystem::path m_path;
};

} // namespace boxlift::media
