#pragma once

#include <string>

namespace boxlift::media::av {

/// Takes over what the FFmpeg libraries log: nothing is printed, the last warning or error of each
/// thread is kept for error reports. May be called any number of times, on any thread.
void captureLog();

/// The last line that was logged on this thread since the last call, "none" when there is none.
std::string takeLastLogLine();

} // namespace boxlift::media::av
