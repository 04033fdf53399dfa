#include "worker/sandbox.h"

#include <ctime>

#include <sandbox.h>

namespace boxlift::worker {

std::string enterSandbox() {
    ::tzset();
    char* error = nullptr;
    // Deprecated in favour of entitlements, which belong to whole applications.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdeprecated-declarations"
    const int result = ::sandbox_init(kSBXProfilePureComputation, SANDBOX_NAMED, &error);
    if (error)
        ::sandbox_free_error(error);
#pragma clang diagnostic pop
    return result == 0 ? "" : "sandbox";
}

} // namespace boxlift::worker
