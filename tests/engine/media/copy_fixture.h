#pragma once

#include "engine/media/passthrough_copier.h"
#include "engine/media/source_fixture.h"
#include "support/media_probe.h"

namespace boxlift::media::test {

/// A test that copies its source into other containers.
class CopyTest : public SourceTest {
protected:
    boxlift::test::ProbedFile copied(FileType type) const {
        return copied(type, *openFile(source()));
    }
    boxlift::test::ProbedFile copied(FileType type, const Asset& asset,
                                     bool optimize = false) const {
        std::filesystem::remove(output());
        const auto result = copyTo(output(), type, asset, optimize);
        EXPECT_EQ(result.status, ExportSession::Status::completed) << result.technical;
        return boxlift::test::probe(output());
    }
};

} // namespace boxlift::media::test
