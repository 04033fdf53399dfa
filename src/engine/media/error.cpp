#include "engine/media/error.h"

#include <array>
#include <iostream>
#include <sstream>

#include "model/cancelled.h"
#include "model/convert_error.h"

namespace boxlift::media {

namespace {

struct SentenceRow {
    ErrorKind kind;
    std::string_view text;
};

constexpr std::array sentences{
    SentenceRow{ErrorKind::noSpace, "The disk is full. Make room and try again."},
    SentenceRow{ErrorKind::notPermitted, "The output folder can't be written to."},
    SentenceRow{ErrorKind::nameTaken, "A file with this name appeared while converting."},
    SentenceRow{ErrorKind::sourceUnreadable,
                "The file can't be read. It may have been moved or deleted."},
    SentenceRow{ErrorKind::sourceEndsEarly,
                "The file is damaged: it ends before its stated length."},
    SentenceRow{ErrorKind::cannotDecode, "The media can't be decoded. It may be damaged."},
    SentenceRow{ErrorKind::decoderMissing, "The media can't be decoded on this computer."},
    SentenceRow{ErrorKind::cannotEncode, "The media can't be encoded."},
    SentenceRow{ErrorKind::unknown, "The operation could not be completed."},
};

} // namespace

std::string_view sentence(ErrorKind kind) {
    for (const SentenceRow& row : sentences)
        if (row.kind == kind)
            return row.text;
    return sentences.back().text;
}

Error::Error(ErrorKind kind, std::string_view operation, const std::filesystem::path& path,
             std::string_view cause)
    : m_kind(kind) {
    m_technical.append(operation).append(" (").append(path.native()).append("): ").append(cause);
}

const char* Error::what() const noexcept {
    return sentence(m_kind).data();
}

void logError(const std::exception& error) noexcept {
    if (dynamic_cast<const Cancelled*>(&error))
        return;
    try {
        const auto* media = dynamic_cast<const Error*>(&error);
        std::ostringstream line;
        line << "boxlift: " << (media ? media->technical() : std::string(error.what())) << '\n';
        std::cerr << line.str() << std::flush;
    } catch (...) {
        // A log line that cannot be written is given up.
    }
}

} // namespace boxlift::media
