#include "bench/allocations.h"

#include <atomic>
#include <cerrno>

// A program's own functions take the place of the C library's, for all its libraries; these are
// what glibc calls its own by, too.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
}

namespace boxlift::bench {

namespace {

std::atomic<std::size_t> all = 0;
std::atomic<std::size_t> large = 0;

void note(std::size_t size) {
    ++all;
    if (size >= largeAllocation)
        ++large;
}

} // namespace

Allocations allocations() {
    return {all, large};
}

} // namespace boxlift::bench

using boxlift::bench::note;

extern "C" {

void* malloc(std::size_t size) {
    note(size);
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
    note(count * size);
    return __libc_calloc(count, size);
}

void* realloc(void* memory, std::size_t size) {
    note(size);
    return __libc_realloc(memory, size);
}

void* memalign(std::size_t alignment, std::size_t size) {
    note(size);
    return __libc_memalign(alignment, size);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return memalign(alignment, size);
}

int posix_memalign(void** memory, std::size_t alignment, std::size_t size) {
    *memory = memalign(alignment, size);
    return *memory ? 0 : ENOMEM;
}
}
