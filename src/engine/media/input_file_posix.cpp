#include "engine/media/input_file.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "engine/media/error.h"
#include "engine/media/platform_files.h"

namespace boxlift::media {

namespace {

[[noreturn]] void failToOpen(const std::filesystem::path& path, const std::string& cause) {
    throw Error(ErrorKind::sourceUnreadable, "open source", path, cause);
}

} // namespace

std::shared_ptr<const InputFile> InputFile::open(const std::filesystem::path& path) {
    // Without O_NONBLOCK a pipe without a writer would hold us here.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (descriptor < 0)
        failToOpen(path, std::generic_category().message(errno));
    return adopt(descriptor, path);
}

std::shared_ptr<const InputFile> InputFile::adopt(int descriptor,
                                                  const std::filesystem::path& path) {
    std::shared_ptr<InputFile> file(new InputFile(descriptor, path));
    struct stat status {};
    if (::fstat(descriptor, &status) != 0)
        failToOpen(path, std::generic_category().message(errno));
    if (!S_ISREG(status.st_mode))
        failToOpen(path, "not a regular file");
    file->m_size = status.st_size;
    return file;
}

InputFile::~InputFile() {
    ::close(m_descriptor);
}

void InputFile::expectSequentialReading() const noexcept {
    platform::expectSequentialReading(m_descriptor);
}

std::int64_t InputFile::readAt(std::int64_t offset, std::span<std::byte> into) const noexcept {
    const std::int64_t left = std::max<std::int64_t>(0, m_size - offset);
    const auto wanted = std::min(static_cast<std::int64_t>(into.size()), left);
    std::int64_t done = 0;
    while (done < wanted) {
        const ssize_t count = ::pread(m_descriptor, into.data() + done,
                                      static_cast<std::size_t>(wanted - done), offset + done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return -errno;
        if (count == 0)
            return -EIO;
        done += count;
    }
    return done;
}

} // namespace boxlift::media
