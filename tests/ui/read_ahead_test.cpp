#include "ui/read_ahead.h"

#include <dlfcn.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string_view>

#include <gtest/gtest.h>

#include <fontconfig/fontconfig.h>

#include "support/temp_folder.h"

namespace boxlift::test {
namespace {

bool isLoaded(const char* library) {
    void* found = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
    if (found)
        dlclose(found);
    return found != nullptr;
}

/// Whether the settings of fonts are those of this file. Where none have been read yet, it reads
/// them.
bool hasFontSettings(const std::filesystem::path& file) {
    const std::unique_ptr<FcStrList, decltype(&FcStrListDone)> files(
        FcConfigGetConfigFiles(FcConfigGetCurrent()), FcStrListDone);
    while (const FcChar8* name = FcStrListNext(files.get()))
        if (std::string_view(reinterpret_cast<const char*>(name)) == file.string())
            return true;
    return false;
}

constexpr std::array libraries{"libQt6QuickTemplates2.so.6", "libQt6QuickLayouts.so.6",
                               "libQt6QmlWorkerScript.so.6"};

TEST(ReadAhead, ReadsTheSettingsOfFontsAndTheLibrariesBehindWhatTheWindowImports) {
    const TempFolder folder;
    const auto settings = writeFile(folder.path() / "fonts.conf", "<fontconfig></fontconfig>");
    ASSERT_EQ(setenv("FONTCONFIG_FILE", settings.c_str(), 1), 0);
    for (const char* library : libraries)
        ASSERT_FALSE(isLoaded(library)) << library;
    { const ReadAhead ahead; }
    for (const char* library : libraries)
        EXPECT_TRUE(isLoaded(library)) << library;
    std::filesystem::remove(settings);
    EXPECT_TRUE(hasFontSettings(settings)) << "they had not been read by then";
}

} // namespace
} // namespace boxlift::test
