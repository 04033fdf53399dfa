#pragma once

#include <filesystem>

#include <QUrl>

namespace boxlift {

/// A file's URL and its path are two spellings of one name; every byte of a name survives, also
/// where it is not UTF-8.
QUrl fileUrl(const std::filesystem::path& path);

/// Empty when the URL is not of a file of this machine or of a name that no file can have.
std::filesystem::path filePath(const QUrl& url);

} // namespace boxlift
