#include "model/export_preset.h"

#include <gtest/gtest.h>

namespace boxlift {
namespace {

TEST(ExportPreset, NamesEachConstant) {
    EXPECT_EQ(name(ExportPreset::AVAssetExportPresetPassthrough), "AVAssetExportPresetPassthrough");
    EXPECT_EQ(name(ExportPreset::AVAssetExportPresetHighestQuality),
              "AVAssetExportPresetHighestQuality");
    EXPECT_EQ(name(ExportPreset::AVAssetExportPreset1920x1080), "AVAssetExportPreset1920x1080");
    EXPECT_EQ(name(ExportPreset::AVAssetExportPreset1280x720), "AVAssetExportPreset1280x720");
}

} // namespace
} // namespace boxlift
