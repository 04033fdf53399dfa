#include "drive/failure_message.h"

#include <new>
#include <stdexcept>

#include <gtest/gtest.h>

#include "engine/media/error.h"
#include "model/convert_error.h"

namespace boxlift::drive {
namespace {

template <typename Exception>
std::string messageOf(const Exception& exception) {
    try {
        throw exception;
    } catch (...) {
        return failureMessage();
    }
}

TEST(FailureMessage, OfAConvertErrorIsItsSentence) {
    EXPECT_EQ(messageOf(ConvertError("This cannot be.")), "This cannot be.");
    EXPECT_EQ(messageOf(ConvertError("")), "");
}

TEST(FailureMessage, OfAMediaErrorIsItsSentenceAndTheLogHasTheRest) {
    const media::Error error(media::ErrorKind::noSpace, "write", "/out/a.mp4", "no room");
    testing::internal::CaptureStderr();
    const std::string message = messageOf(error);
    const std::string log = testing::internal::GetCapturedStderr();

    EXPECT_EQ(message, error.what());
    EXPECT_NE(log.find("/out/a.mp4"), std::string::npos) << log;
}

TEST(FailureMessage, OfAnythingElseIsGeneral) {
    constexpr const char* general = "The operation could not be completed.";
    testing::internal::CaptureStderr();

    EXPECT_EQ(messageOf(std::bad_alloc()), general);
    EXPECT_EQ(messageOf(std::runtime_error("vector::_M_range_check")), general);
    EXPECT_EQ(messageOf(7), general);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("vector::_M_range_check"),
              std::string::npos);
}

} // namespace
} // namespace boxlift::drive
