#include "bench/memory.h"

#include <fstream>

#include <malloc.h>
#include <unistd.h>

namespace boxlift::bench {

std::size_t residentBytes() {
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

void giveBackFreeMemory() {
    ::malloc_trim(0);
}

} // namespace boxlift::bench
