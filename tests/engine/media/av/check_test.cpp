#include "engine/media/av/check.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <optional>

#include "engine/media/av/ffmpeg.h"
#include "engine/media/av/log.h"
#include "model/cancelled.h"

namespace boxlift::media::av {

namespace {

constexpr std::array allOperations{Operation::open,   Operation::read,   Operation::decode,
                                   Operation::filter, Operation::encode, Operation::mux};

std::optional<ErrorKind> kindOf(int code, Operation operation) {
    try {
        check(code, operation, "try", "/file");
    } catch (const Error& error) {
        return error.kind();
    }
    return std::nullopt;
}

} // namespace

TEST(Check, ReturnsWhatIsNoError) {
    for (const Operation operation : allOperations) {
        EXPECT_EQ(check(0, operation, "try", "/file"), 0);
        EXPECT_EQ(check(42, operation, "try", "/file"), 42);
    }
}

TEST(Check, TakesAnInterruptionForACancellation) {
    for (const Operation operation : allOperations)
        EXPECT_THROW(check(AVERROR_EXIT, operation, "try", "/file"), Cancelled);
}

TEST(Check, BlamesTheFileForSystemErrorsWhileReading) {
    for (const Operation operation : {Operation::open, Operation::read})
        for (const int code : {EIO, ENOENT, EACCES, EPERM})
            EXPECT_EQ(kindOf(AVERROR(code), operation), ErrorKind::sourceUnreadable) << code;
}

TEST(Check, BlamesTheContentsForTheLibrariesOwnErrorsWhileReading) {
    for (const Operation operation : {Operation::open, Operation::read})
        for (const int code : {AVERROR_INVALIDDATA, AVERROR_EOF, AVERROR_DEMUXER_NOT_FOUND,
                               AVERROR_PATCHWELCOME, AVERROR(EINVAL)})
            EXPECT_EQ(kindOf(code, operation), ErrorKind::cannotDecode) << describe(code);
}

TEST(Check, TellsAMissingDecoderFromDamagedMedia) {
    EXPECT_EQ(kindOf(AVERROR_DECODER_NOT_FOUND, Operation::decode), ErrorKind::decoderMissing);
    EXPECT_EQ(kindOf(AVERROR_PATCHWELCOME, Operation::decode), ErrorKind::decoderMissing);
    EXPECT_EQ(kindOf(AVERROR(ENOSYS), Operation::decode), ErrorKind::decoderMissing);
    EXPECT_EQ(kindOf(AVERROR_INVALIDDATA, Operation::decode), ErrorKind::cannotDecode);
    EXPECT_EQ(kindOf(AVERROR(ENOMEM), Operation::decode), ErrorKind::cannotDecode);
}

TEST(Check, CallsEveryFailureOfFilterAndEncoderAnEncodingError) {
    for (const Operation operation : {Operation::filter, Operation::encode})
        for (const int code : {AVERROR(EINVAL), AVERROR(ENOSPC), AVERROR_ENCODER_NOT_FOUND})
            EXPECT_EQ(kindOf(code, operation), ErrorKind::cannotEncode) << describe(code);
}

TEST(Check, TellsWhyAFileCannotBeWritten) {
    EXPECT_EQ(kindOf(AVERROR(ENOSPC), Operation::mux), ErrorKind::noSpace);
    EXPECT_EQ(kindOf(AVERROR(EROFS), Operation::mux), ErrorKind::notPermitted);
    EXPECT_EQ(kindOf(AVERROR_INVALIDDATA, Operation::mux), ErrorKind::unknown);
}

TEST(Check, TellsOperationPathCauseAndLastMessageForTheLog) {
    captureLog();
    av_log(nullptr, AV_LOG_ERROR, "the tape is torn\n");
    try {
        check(AVERROR_INVALIDDATA, Operation::open, "open source", "/in/a.mp4");
        FAIL() << "no error";
    } catch (const Error& error) {
        EXPECT_EQ(error.technical(), "open source (/in/a.mp4): " + describe(AVERROR_INVALIDDATA) +
                                         "; last message: the tape is torn");
    }
}

TEST(Check, TellsEachMessageOnce) {
    captureLog();
    av_log(nullptr, AV_LOG_ERROR, "the tape is torn\n");
    EXPECT_THROW(check(AVERROR_INVALIDDATA, Operation::open, "open source", "/in/a.mp4"), Error);
    try {
        check(AVERROR_INVALIDDATA, Operation::open, "open source", "/in/b.mp4");
        FAIL() << "no error";
    } catch (const Error& error) {
        EXPECT_EQ(error.technical(), "open source (/in/b.mp4): " + describe(AVERROR_INVALIDDATA) +
                                         "; last message: none");
    }
}

TEST(Check, DescribesCodesInWords) {
    EXPECT_EQ(describe(AVERROR_EOF), "End of file");
    EXPECT_EQ(describe(AVERROR(ENOSPC)), "No space left on device");
}

} // namespace boxlift::media::av
