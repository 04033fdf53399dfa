#include "engine/media/error.h"

#include <gtest/gtest.h>

#include <array>
#include <stdexcept>

#include "model/cancelled.h"

namespace boxlift::media {

namespace {

struct Case {
    ErrorKind kind;
    const char* sentence;
};

constexpr std::array cases{
    Case{ErrorKind::noSpace, "The disk is full. Make room and try again."},
    Case{ErrorKind::notPermitted, "The output folder can't be written to."},
    Case{ErrorKind::nameTaken, "A file with this name appeared while converting."},
    Case{ErrorKind::sourceUnreadable, "The file can't be read. It may have been moved or deleted."},
    Case{ErrorKind::sourceEndsEarly, "The file is damaged: it ends before its stated length."},
    Case{ErrorKind::cannotDecode, "The media can't be decoded. It may be damaged."},
    Case{ErrorKind::decoderMissing, "The media can't be decoded on this computer."},
    Case{ErrorKind::cannotEncode, "The media can't be encoded."},
    Case{ErrorKind::unknown, "The operation could not be completed."},
};

std::string logged(const std::exception& error) {
    testing::internal::CaptureStderr();
    logError(error);
    return testing::internal::GetCapturedStderr();
}

} // namespace

TEST(Error, HasASentenceForEveryKind) {
    for (const auto& [kind, text] : cases) {
        EXPECT_EQ(sentence(kind), text);
        EXPECT_STREQ(Error(kind, "read", "/in", "cause").what(), text);
        EXPECT_EQ(Error(kind, "read", "/in", "cause").kind(), kind);
    }
}

TEST(Error, TellsOperationPathAndCauseOnTheTechnicalSide) {
    const Error error(ErrorKind::unknown, "write header", "/a folder/b\xff.mp4",
                      "Invalid argument");
    EXPECT_EQ(error.technical(), "write header (/a folder/b\xff.mp4): Invalid argument");
}

TEST(LogError, WritesTheTechnicalSideAsOneLine) {
    EXPECT_EQ(logged(Error(ErrorKind::noSpace, "write media", "/out.mp4", "28")),
              "boxlift: write media (/out.mp4): 28\n");
}

TEST(LogError, WritesWhatOtherErrorsSay) {
    EXPECT_EQ(logged(std::runtime_error("lost")), "boxlift: lost\n");
}

TEST(LogError, IsSilentAboutCancellation) {
    EXPECT_EQ(logged(Cancelled()), "");
}

} // namespace boxlift::media
