#include "ui/read_ahead.h"

#include <dlfcn.h>

#include <gtest/gtest.h>

namespace boxlift::test {
namespace {

bool isLoaded(const char* library) {
    void* found = dlopen(library, RTLD_LAZY | RTLD_NOLOAD);
    if (found)
        dlclose(found);
    return found != nullptr;
}

TEST(ReadAhead, LoadsTheLibrariesBehindWhatTheWindowImports) {
    { const ReadAhead ahead; }
    EXPECT_FALSE(isLoaded("libQt6NoSuchLibrary.so.6"));
    EXPECT_TRUE(isLoaded("libQt6QuickTemplates2.so.6"));
    EXPECT_TRUE(isLoaded("libQt6QuickLayouts.so.6"));
    EXPECT_TRUE(isLoaded("libQt6QmlWorkerScript.so.6"));
}

} // namespace
} // namespace boxlift::test
