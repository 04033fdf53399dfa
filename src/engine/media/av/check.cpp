#include "engine/media/av/check.h"

#include <array>
#include <cerrno>

#include "engine/media/av/ffmpeg.h"
#include "engine/media/av/log.h"
#include "model/cancelled.h"

namespace boxlift::media::av {

namespace {

struct CodeRow {
    int code;
    ErrorKind kind;
};

/// Codes that mean the same whatever the operation.
constexpr std::array writingCodes{
    CodeRow{AVERROR(ENOSPC), ErrorKind::noSpace},
    CodeRow{AVERROR(EDQUOT), ErrorKind::noSpace},
    CodeRow{AVERROR(EFBIG), ErrorKind::noSpace},
    CodeRow{AVERROR(EROFS), ErrorKind::notPermitted},
    CodeRow{AVERROR(EACCES), ErrorKind::notPermitted},
    CodeRow{AVERROR(EPERM), ErrorKind::notPermitted},
    CodeRow{AVERROR(EEXIST), ErrorKind::nameTaken},
};

ErrorKind writingKind(int code) {
    for (const CodeRow& row : writingCodes)
        if (row.code == code)
            return row.kind;
    return ErrorKind::unknown;
}

ErrorKind readingKind(int code) {
    // FFmpeg's own codes speak of the contents, the system's of the file.
    const bool isSystemCode = AVUNERROR(code) > 0 && AVUNERROR(code) < 4096;
    const bool isInvalid = code == AVERROR(EINVAL) || code == AVERROR_INVALIDDATA;
    return isSystemCode && !isInvalid ? ErrorKind::sourceUnreadable : ErrorKind::cannotDecode;
}

ErrorKind kindOf(int code, Operation operation) {
    switch (operation) {
    case Operation::open:
    case Operation::read:
        return readingKind(code);
    case Operation::decode:
        return code == AVERROR_DECODER_NOT_FOUND || code == AVERROR_PATCHWELCOME ||
                       code == AVERROR(ENOSYS)
                   ? ErrorKind::decoderMissing
                   : ErrorKind::cannotDecode;
    case Operation::filter:
    case Operation::encode:
        return ErrorKind::cannotEncode;
    case Operation::write:
    case Operation::mux:
        return writingKind(code);
    }
    return ErrorKind::unknown;
}

} // namespace

int check(int result, Operation operation, std::string_view what,
          const std::filesystem::path& path) {
    if (result >= 0)
        return result;
    if (result == AVERROR_EXIT)
        throw Cancelled();
    throw Error(kindOf(result, operation), what, path,
                describe(result) + "; last message: " + lastLogLine());
}

void throwIfStopped(const std::stop_token& stop) {
    if (stop.stop_requested())
        throw Cancelled();
}

std::string describe(int code) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(code, text.data(), text.size());
    return text.data();
}

} // namespace boxlift::media::av
