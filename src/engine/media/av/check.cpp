#include "engine/media/av/check.h"

#include <array>
#include <cerrno>

#include "engine/media/av/ffmpeg.h"
#include "engine/media/av/log.h"
#include "engine/media/write_error.h"
#include "model/cancelled.h"

namespace boxlift::media::av {

namespace {

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
    case Operation::mux:
        return writeErrorKind(AVUNERROR(code));
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
                describe(result) + "; last message: " + takeLastLogLine());
}

std::string describe(int code) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(code, text.data(), text.size());
    return text.data();
}

} // namespace boxlift::media::av
