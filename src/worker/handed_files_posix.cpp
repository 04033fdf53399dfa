#include "worker/handed_files.h"

#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

#include "engine/media/error.h"

namespace boxlift::worker {

namespace {

int duplicate(const Descriptor& descriptor) {
    return ::fcntl(descriptor.get(), F_DUPFD_CLOEXEC, 0);
}

} // namespace

std::shared_ptr<const media::InputFile>
HandedFiles::openInput(const std::filesystem::path& path) const {
    const int descriptor = duplicate(m_source);
    if (descriptor < 0)
        throw media::Error(media::ErrorKind::sourceUnreadable, "open source", path,
                           std::generic_category().message(errno));
    return media::InputFile::adopt(descriptor, path);
}

std::unique_ptr<media::OutputFile>
HandedFiles::createOutput(const std::filesystem::path& path) const {
    // An attempt before this one may have left something.
    if (::ftruncate(m_output.get(), 0) != 0)
        media::throwWriteError(errno, "create output", path);
    const int descriptor = duplicate(m_output);
    if (descriptor < 0)
        media::throwWriteError(errno, "create output", path);
    return media::OutputFile::adopt(descriptor, path);
}

void HandedFiles::clearOutput(const std::filesystem::path&, const std::filesystem::path&) const {}

} // namespace boxlift::worker
