#include "model/file_type.h"

#include <gtest/gtest.h>

namespace boxlift {
namespace {

TEST(FileType, NamesEachConstant) {
    EXPECT_EQ(name(FileType::AVFileTypeMPEG4), "AVFileTypeMPEG4");
    EXPECT_EQ(name(FileType::AVFileTypeQuickTimeMovie), "AVFileTypeQuickTimeMovie");
    EXPECT_EQ(name(FileType::AVFileTypeAppleM4A), "AVFileTypeAppleM4A");
}

} // namespace
} // namespace boxlift
