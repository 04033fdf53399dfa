#include "engine/media/write_error.h"

#include <algorithm>
#include <array>
#include <cerrno>

namespace boxlift::media {

namespace {

struct Row {
    int error;
    ErrorKind kind;
};

constexpr auto rows = std::to_array<Row>({
    {ENOSPC, ErrorKind::noSpace},
    {EDQUOT, ErrorKind::noSpace},
    {EFBIG, ErrorKind::noSpace},
    {EEXIST, ErrorKind::nameTaken},
    {EACCES, ErrorKind::notPermitted},
    {EPERM, ErrorKind::notPermitted},
    {EROFS, ErrorKind::notPermitted},
    {ENOENT, ErrorKind::notPermitted},
    {ENOTDIR, ErrorKind::notPermitted},
});

} // namespace

ErrorKind writeErrorKind(int systemError) {
    const auto* row = std::ranges::find(rows, systemError, &Row::error);
    return row == rows.end() ? ErrorKind::unknown : row->kind;
}

} // namespace boxlift::media
