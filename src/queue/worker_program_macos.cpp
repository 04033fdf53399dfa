#include "queue/worker_program.h"

#include <cstdint>
#include <string>

#include <mach-o/dyld.h>

namespace boxlift {

std::filesystem::path runningProgram() {
    std::uint32_t size = 0;
    ::_NSGetExecutablePath(nullptr, &size);
    std::string path(size, '\0');
    if (::_NSGetExecutablePath(path.data(), &size) != 0)
        return {};
    return path.c_str();
}

} // namespace boxlift
