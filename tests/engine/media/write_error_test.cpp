#include "engine/media/write_error.h"

#include <cerrno>

#include <gtest/gtest.h>

namespace boxlift::media {
namespace {

TEST(WriteError, TellsAFullDiskFromAFolderThatIsNotOurs) {
    for (const int error : {ENOSPC, EDQUOT, EFBIG})
        EXPECT_EQ(writeErrorKind(error), ErrorKind::noSpace) << error;
    for (const int error : {EROFS, EACCES, EPERM, ENOENT, ENOTDIR})
        EXPECT_EQ(writeErrorKind(error), ErrorKind::notPermitted) << error;
}

TEST(WriteError, KnowsANameThatIsTaken) {
    EXPECT_EQ(writeErrorKind(EEXIST), ErrorKind::nameTaken);
}

TEST(WriteError, TakesNothingElseForKnown) {
    for (const int error : {0, EINVAL, EIO, ENOMEM})
        EXPECT_EQ(writeErrorKind(error), ErrorKind::unknown) << error;
}

} // namespace
} // namespace boxlift::media
