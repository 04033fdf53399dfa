#pragma once

#include "engine/media/error.h"

namespace boxlift::media {

/// What an error number of the system means when it comes from making or writing an output.
ErrorKind writeErrorKind(int systemError);

} // namespace boxlift::media
