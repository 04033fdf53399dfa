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

TEST(ThrowIfStopped, ThrowsOnlyAfterAStop) {
    std::stop_source source;
    EXPECT_NO_THROW(throwIfStopped({}));
    EXPECT_NO_THROW(throwIfStopped(source.get_token()));
    source.request_stop();
    EXPECT_THROW(throwIfStopped(source.get_token()), Cancelled);
}

} // namespace
} // namespace boxlift
