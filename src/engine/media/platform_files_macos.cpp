#include "engine/media/platform_files.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

namespace boxlift::media::platform {

// The system has no unnamed files that can be given a name later.
int openUnnamed(const std::filesystem::path&) {
    errno = ENOTSUP;
    return -1;
}

int nameUnnamed(int, const std::filesystem::path&) {
    return ENOTSUP;
}

int renameExclusively(const std::filesystem::path& from, const std::filesystem::path& to) {
    if (::renamex_np(from.c_str(), to.c_str(), RENAME_EXCL) == 0)
        return 0;
    if (errno != ENOTSUP)
        return errno;
    if (::link(from.c_str(), to.c_str()) != 0)
        return errno;
    ::unlink(from.c_str());
    return 0;
}

// The system begins to write by itself, and reads ahead.
void startWriteBack(int, std::int64_t, std::int64_t) {}

void expectSequentialReading(int) {}

int syncData(int descriptor) {
    // fsync() alone leaves the data in the drive's cache; not every file system knows the stronger
    // call.
    if (::fcntl(descriptor, F_FULLFSYNC) == 0)
        return 0;
    return ::fsync(descriptor) == 0 ? 0 : errno;
}

} // namespace boxlift::media::platform
