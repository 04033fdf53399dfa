#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>

namespace boxlift::media {

/// A file that is being written and has no name yet: a transaction. publish() gives it its name,
/// without replacing anything; destroyed before that, it leaves nothing behind. Where the file
/// system has no unnamed files it is a hidden, locked file in the same folder; such files that a
/// crash left there are swept when the next one is made. One thread at a time.
class OutputFile {
public:
    /// Throws media::Error when the folder cannot be written to or would refuse the name.
    static std::unique_ptr<OutputFile> create(const std::filesystem::path& path);
    /// Takes over `descriptor`, a file that somebody else made, and who will name or remove it:
    /// publish() does nothing. `path` is for messages only.
    static std::unique_ptr<OutputFile> adopt(int descriptor, const std::filesystem::path& path);

    virtual ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// The name that publish() will give.
    const std::filesystem::path& path() const { return m_path; }
    /// Stays this object's.
    int descriptor() const { return m_descriptor; }
    /// Writes all of it; 0 or errno. What is written in order begins its way to the disk at once.
    int writeAt(std::int64_t offset, std::span<const std::byte> data) noexcept;
    /// Number of bytes read, or -errno.
    virtual std::int64_t readAt(std::int64_t offset, std::span<std::byte> into) const noexcept;

    /// What has been written in all, counting what was written twice as two.
    std::int64_t bytesWritten() const { return m_bytesWritten; }

    /// Brings the data to the disk. Throws media::Error.
    void sync();
    /// Gives the file its name. Throws media::Error; kind
    /// nameTaken when somebody else's file has the name by now. The last act: nothing can fail
    /// after it.
    void publish();

protected:
    /// Takes over the other's file; the other has none from then on.
    OutputFile(OutputFile&& other) noexcept;

private:
    enum class Naming { link, rename, byItsMaker };

    explicit OutputFile(const std::filesystem::path& path) : m_path(path) {}
    void openHidden(const std::filesystem::path& folder);
    void hurry(std::int64_t end) noexcept;

    std::filesystem::path m_path;
    Naming m_naming = Naming::link;
    std::filesystem::path m_hiddenName; ///< Of a file that is to be renamed.
    int m_descriptor = -1;
    std::int64_t m_bytesWritten = 0;
    std::int64_t m_hurried = 0; ///< Up to here the disk has been told.
};

/// The error that a failed write to `path` means for people.
[[noreturn]] void throwWriteError(int error, std::string_view operation,
                                  const std::filesystem::path& path);

/// Removes the file or link at `output`, never a folder and never the file that `source` leads to.
void clearOutput(const std::filesystem::path& output, const std::filesystem::path& source);

} // namespace boxlift::media
