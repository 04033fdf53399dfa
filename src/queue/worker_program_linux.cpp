#include "queue/worker_program.h"

#include <system_error>

namespace boxlift {

std::filesystem::path runningProgram() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error);
}

} // namespace boxlift
