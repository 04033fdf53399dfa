#include "model/cancelled.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "model/convert_error.h"

namespace boxlift {
namespace {

TEST(Cancelled, IsNotCaughtAsAFailure) {
    bool caughtAsCancelled = false;
    try {
        throw Cancelled();
    } catch (const ConvertError&) {
        FAIL() << "a cancellation was taken for a conversion error";
    } catch (const std::runtime_error&) {
        FAIL() << "a cancellation was taken for a run-time error";
    } catch (const Cancelled&) {
        caughtAsCancelled = true;
    }
    EXPECT_TRUE(caughtAsCancelled);
}

TEST(Cancelled, IsAStandardExceptionThatNamesItself) {
    try {
        throw Cancelled();
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "cancelled");
    }
}

} // namespace
} // namespace boxlift
