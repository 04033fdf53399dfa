#pragma once

#include <chrono>
#include <exception>
#include <filesystem>
#include <vector>

#include "model/file_type.h"

namespace boxlift::media {

/// One export of one asset with one preset. Configure, start once, wait. The work happens on the
/// session's own thread; destruction cancels and joins it.
///
/// The output appears under its name, whole, when and only when the session completes; otherwise
/// nothing of it is left, and whatever stands at the name is untouched.
class ExportSession {
public:
    enum class Status { unknown, waiting, exporting, completed, failed, cancelled };

    virtual ~ExportSession() = default;

    // The owner's thread, before the start.
    virtual std::vector<FileType> supportedFileTypes() const = 0;
    virtual void setOutputUrl(const std::filesystem::path& path) = 0;
    virtual void setOutputFileType(FileType type) = 0;
    /// Puts the index in front of the media data.
    virtual void setShouldOptimizeForNetworkUse(bool optimize) = 0;
    virtual void exportAsynchronously() = 0;
    /// True when the session has ended.
    virtual bool waitUntilFinished(std::chrono::milliseconds timeout) = 0;

    // Any thread, at any time.
    /// 0 to 1; below 1 until the session has completed.
    virtual float progress() const = 0;
    virtual Status status() const = 0;
    /// Why the session failed, if it can tell.
    virtual std::exception_ptr error() const = 0;
    virtual void cancelExport() = 0;
};

} // namespace boxlift::media
