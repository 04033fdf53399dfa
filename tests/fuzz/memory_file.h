#pragma once

#include <string_view>

#include "worker/protocol/descriptor.h"

namespace boxlift::test {

/// An open file without a name and without a disk, with these bytes. Throws std::system_error.
worker::Descriptor memoryFile(std::string_view bytes);

} // namespace boxlift::test
