#include "engine/media/output_file.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <random>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "engine/media/error.h"
#include "engine/media/platform_files.h"
#include "engine/media/write_error.h"

namespace boxlift::media {

namespace {

constexpr std::string_view hiddenPrefix = ".boxlift-";
constexpr std::string_view hiddenSuffix = ".part";

/// The disk is kept busy while more is made, so that the sync at the end is short.
constexpr std::int64_t writeBackSize = 8 << 20;

std::filesystem::path folderOf(const std::filesystem::path& path) {
    const auto folder = path.parent_path();
    return folder.empty() ? std::filesystem::path(".") : folder;
}

std::string randomHiddenName() {
    std::random_device device;
    std::string name(hiddenPrefix);
    for (int i = 0; i < 16; ++i)
        name += "0123456789abcdef"[device() % 16];
    return name.append(hiddenSuffix);
}

bool isHiddenName(std::string_view name) {
    return name.size() == hiddenPrefix.size() + 16 + hiddenSuffix.size() &&
           name.starts_with(hiddenPrefix) && name.ends_with(hiddenSuffix);
}

enum class Lock { taken, heldByOther, unsupported };

/// A living owner holds a lock on its hidden file.
Lock takeLock(int descriptor) {
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0)
        return Lock::taken;
    return errno == EWOULDBLOCK ? Lock::heldByOther : Lock::unsupported;
}

bool isStillNamed(int descriptor, const std::filesystem::path& path) {
    struct stat opened {};
    struct stat named {};
    return ::fstat(descriptor, &opened) == 0 && ::lstat(path.c_str(), &named) == 0 &&
           opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

void sweepIfStale(const std::filesystem::path& path) {
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (descriptor < 0)
        return;
    if (takeLock(descriptor) == Lock::taken && isStillNamed(descriptor, path))
        ::unlink(path.c_str());
    ::close(descriptor);
}

void sweepStaleFiles(const std::filesystem::path& folder) {
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        if (isHiddenName(entry->path().filename().native()))
            sweepIfStale(entry->path());
}

/// A name that the file system refuses is found out before the work.
void checkName(const std::filesystem::path& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) == 0)
        throwWriteError(EEXIST, "create output", path);
    if (errno != ENOENT)
        throwWriteError(errno, "create output", path);
}

} // namespace

void throwWriteError(int error, std::string_view operation, const std::filesystem::path& path) {
    throw Error(writeErrorKind(error), operation, path, std::generic_category().message(error));
}

std::unique_ptr<OutputFile> OutputFile::create(const std::filesystem::path& path) {
    checkName(path);
    const auto folder = folderOf(path);
    std::unique_ptr<OutputFile> file(new OutputFile(path));
    file->m_descriptor = platform::openUnnamed(folder);
    if (file->m_descriptor < 0 && errno == ENOTSUP)
        file->openHidden(folder);
    if (file->m_descriptor < 0)
        throwWriteError(errno, "create output", path);
    return file;
}

std::unique_ptr<OutputFile> OutputFile::adopt(int descriptor, const std::filesystem::path& path) {
    std::unique_ptr<OutputFile> file(new OutputFile(path));
    file->m_descriptor = descriptor;
    file->m_naming = Naming::byItsMaker;
    return file;
}

OutputFile::OutputFile(OutputFile&& other) noexcept
    : m_path(std::move(other.m_path)), m_naming(other.m_naming),
      m_hiddenName(std::exchange(other.m_hiddenName, {})),
      m_descriptor(std::exchange(other.m_descriptor, -1)), m_bytesWritten(other.m_bytesWritten),
      m_hurried(other.m_hurried) {}

void OutputFile::openHidden(const std::filesystem::path& folder) {
    sweepStaleFiles(folder);
    for (int attempt = 0; attempt < 16; ++attempt) {
        const auto name = folder / randomHiddenName();
        m_descriptor = ::open(name.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0666);
        if (m_descriptor < 0 && errno == EEXIST)
            continue;
        if (m_descriptor < 0)
            return;
        m_hiddenName = name;
        m_naming = Naming::rename;
        // Where there are no locks there is no sweep either.
        if (takeLock(m_descriptor) != Lock::heldByOther && isStillNamed(m_descriptor, name))
            return;
        // Another instance's sweep came between making and locking it.
        ::close(m_descriptor);
        m_hiddenName.clear();
        m_descriptor = -1;
        errno = EEXIST;
    }
}

OutputFile::~OutputFile() {
    if (!m_hiddenName.empty())
        ::unlink(m_hiddenName.c_str());
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

int OutputFile::writeAt(std::int64_t offset, std::span<const std::byte> data) noexcept {
    while (!data.empty()) {
        const ssize_t count = ::pwrite(m_descriptor, data.data(), data.size(), offset);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return count < 0 ? errno : EIO;
        offset += count;
        m_bytesWritten += count;
        data = data.subspan(static_cast<std::size_t>(count));
    }
    hurry(offset);
    return 0;
}

void OutputFile::hurry(std::int64_t end) noexcept {
    if (end - m_hurried < writeBackSize)
        return;
    platform::startWriteBack(m_descriptor, m_hurried, end - m_hurried);
    m_hurried = end;
}

std::int64_t OutputFile::readAt(std::int64_t offset, std::span<std::byte> into) const noexcept {
    ssize_t count = -1;
    do
        count = ::pread(m_descriptor, into.data(), into.size(), offset);
    while (count < 0 && errno == EINTR);
    return count < 0 ? -errno : count;
}

void OutputFile::sync() {
    if (const int error = platform::syncData(m_descriptor))
        throwWriteError(error, "write output", m_path);
}

void OutputFile::publish() {
    if (m_naming == Naming::byItsMaker)
        return;
    const int error = m_naming == Naming::link ? platform::nameUnnamed(m_descriptor, m_path)
                                               : platform::renameExclusively(m_hiddenName, m_path);
    if (error)
        throwWriteError(error, "name output", m_path);
    m_hiddenName.clear();
}

void clearOutput(const std::filesystem::path& output, const std::filesystem::path& source) {
    struct stat standing {};
    struct stat read {};
    if (::lstat(output.c_str(), &standing) != 0 || S_ISDIR(standing.st_mode))
        return;
    const bool isSource = ::stat(source.c_str(), &read) == 0 && read.st_ino == standing.st_ino &&
                          read.st_dev == standing.st_dev;
    if (!isSource)
        ::unlink(output.c_str());
}

} // namespace boxlift::media
