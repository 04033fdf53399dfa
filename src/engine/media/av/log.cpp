#include "engine/media/av/log.h"

#include <array>
#include <mutex>

#include "engine/media/av/ffmpeg.h"

namespace boxlift::media::av {

namespace {

using Line = std::array<char, 512>;

// The callback has no argument of ours and may run on any thread of the libraries: the framework
// leaves no other place.
thread_local Line lastLine{};

void keepLine(void* context, int level, const char* format, va_list arguments) noexcept {
    if (level > AV_LOG_WARNING)
        return;
    int printPrefix = 1;
    av_log_format_line2(context, level, format, arguments, lastLine.data(),
                        static_cast<int>(lastLine.size()), &printPrefix);
}

} // namespace

void captureLog() {
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_callback(keepLine); });
}

std::string takeLastLogLine() {
    std::string line(lastLine.data());
    lastLine.front() = '\0';
    while (!line.empty() && (line.back() == '\n' || line.back() == '\r'))
        line.pop_back();
    return line.empty() ? "none" : line;
}

} // namespace boxlift::media::av
