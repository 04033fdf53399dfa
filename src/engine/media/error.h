#pragma once

#include <exception>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

namespace boxlift::media {

enum class ErrorKind {
    noSpace,
    notPermitted,
    nameTaken,
    sourceUnreadable,
    sourceEndsEarly,
    cannotDecode,
    decoderMissing,
    cannotEncode,
    unknown, ///< Stays the last.
};

/// The sentence that people are shown for this kind of error.
std::string_view sentence(ErrorKind kind);

/// A failure of the media layer. `what()` is a complete English sentence for people;
/// `technical()` says for the log which operation failed, on which file, and why.
class Error : public std::exception {
public:
    Error(ErrorKind kind, std::string_view operation, const std::filesystem::path& path,
          std::string_view cause);
    /// One whose technical() is known, from another process.
    Error(ErrorKind kind, std::string technical)
        : m_kind(kind), m_technical(std::move(technical)) {}

    ErrorKind kind() const { return m_kind; }
    const std::string& technical() const { return m_technical; }
    const char* what() const noexcept override;

private:
    ErrorKind m_kind;
    std::string m_technical;
};

/// Writes the technical side of an error to the log (standard error); cancellation is not logged.
/// Any thread.
void logError(const std::exception& error) noexcept;

} // namespace boxlift::media
