#include "queue/worker_program.h"

#include <system_error>

namespace boxlift {

namespace fs = std::filesystem;

fs::path workerProgram() {
    const fs::path folder = runningProgram().parent_path();
    fs::path beside = folder / "boxlift-worker";
    std::error_code error;
    if (fs::exists(beside, error))
        return beside;
    return (folder / BOXLIFT_WORKER_FROM_PROGRAMS / "boxlift-worker").lexically_normal();
}

} // namespace boxlift
