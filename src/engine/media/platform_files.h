#pragma once

#include <cstdint>
#include <filesystem>

namespace boxlift::media::platform {

/// A file without a name in `folder`, open for reading and writing with the user's usual
/// permissions: its descriptor, or -1 (errno set; ENOTSUP when the system or the file system has
/// no such files).
int openUnnamed(const std::filesystem::path& folder);

/// Gives an unnamed file its name, replacing nothing. 0 or errno.
int nameUnnamed(int descriptor, const std::filesystem::path& name);

/// Renames without replacing anything. 0 or errno (EEXIST when the name is taken).
int renameExclusively(const std::filesystem::path& from, const std::filesystem::path& to);

/// Lets a part of a file begin its way to the disk, without waiting for it. A hint.
void startWriteBack(int descriptor, std::int64_t offset, std::int64_t size);

/// Says that a file will be read from its beginning to its end. A hint.
void expectSequentialReading(int descriptor);

/// Brings a file's data, and what is needed to find it, onto the disk. 0 or errno.
int syncData(int descriptor);

} // namespace boxlift::media::platform
