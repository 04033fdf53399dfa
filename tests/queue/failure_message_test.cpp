#include "queue/failure_message.h"

#include <stdexcept>

#include <gtest/gtest.h>

#include "engine/media/error.h"
#include "model/convert_error.h"

namespace boxlift {
namespace {

template <typename Error>
std::string messageOf(const Error& error) {
    try {
        throw error;
    } catch (...) {
        return failureMessage();
    }
}

TEST(FailureMessage, IsTheMessageOfAFailureThatIsMeantForPeople) {
    EXPECT_EQ(messageOf(ConvertError("Not this one.")), "Not this one.");
    EXPECT_EQ(messageOf(ConvertError("")), "");
}

TEST(FailureMessage, IsTheSentenceOfAFailureOfTheMediaLayer) {
    const media::Error error(media::ErrorKind::noSpace, "write", "/out/a.mp4", "ENOSPC");
    testing::internal::CaptureStderr();

    EXPECT_EQ(messageOf(error), media::sentence(media::ErrorKind::noSpace));
    EXPECT_NE(testing::internal::GetCapturedStderr().find("/out/a.mp4"), std::string::npos);
}

TEST(FailureMessage, LeavesTheTextOfOtherExceptionsToTheLog) {
    testing::internal::CaptureStderr();

    EXPECT_EQ(messageOf(std::out_of_range("vector::at")),
              media::sentence(media::ErrorKind::unknown));
    EXPECT_NE(testing::internal::GetCapturedStderr().find("vector::at"), std::string::npos);
}

TEST(FailureMessage, HasASentenceForWhatIsNoException) {
    EXPECT_EQ(messageOf(7), media::sentence(media::ErrorKind::unknown));
}

} // namespace
} // namespace boxlift
