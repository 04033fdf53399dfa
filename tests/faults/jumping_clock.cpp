// Loaded into a program, it makes the time of day jump by up to a day, back and forth, at every
// look; the clocks that only go forward stay as they are.

#include <ctime>

#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

time_t jump() {
    timespec now{};
    ::syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &now);
    return (now.tv_nsec / 1000 % 2 == 0 ? 1 : -1) * (now.tv_nsec / 1000 % 86400);
}

} // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec* time) noexcept {
    const auto result = static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
    if (result == 0 && clock == CLOCK_REALTIME)
        time->tv_sec += jump();
    return result;
}

int gettimeofday(timeval* time, void*) noexcept {
    timespec now{};
    const int result = clock_gettime(CLOCK_REALTIME, &now);
    *time = {.tv_sec = now.tv_sec, .tv_usec = now.tv_nsec / 1000};
    return result;
}

time_t time(time_t* result) noexcept {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (result)
        *result = now.tv_sec;
    return now.tv_sec;
}

} // extern "C"
