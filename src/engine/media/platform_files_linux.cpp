#include "engine/media/platform_files.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <string>
#include <unistd.h>

namespace boxlift::media::platform {

int openUnnamed(const std::filesystem::path& folder) {
    const int descriptor = ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
    // Kernels and file systems without unnamed files answer in these three ways.
    if (descriptor < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL))
        errno = ENOTSUP;
    return descriptor;
}

int nameUnnamed(int descriptor, const std::filesystem::path& name) {
    const std::string self = "/proc/self/fd/" + std::to_string(descriptor);
    return ::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0 ? 0
                                                                                            : errno;
}

int renameExclusively(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return 0;
    if (errno != EINVAL && errno != ENOSYS)
        return errno;
    // The file system does not know the flag: a hard link refuses a taken name as well.
    if (::link(from.c_str(), to.c_str()) != 0)
        return errno;
    ::unlink(from.c_str());
    return 0;
}

void startWriteBack(int descriptor, std::int64_t offset, std::int64_t size) {
    ::sync_file_range(descriptor, offset, size, SYNC_FILE_RANGE_WRITE);
}

void expectSequentialReading(int descriptor) {
    ::posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
}

int syncData(int descriptor) {
    return ::fdatasync(descriptor) == 0 ? 0 : errno;
}

} // namespace boxlift::media::platform
