#pragma once

#include <string>

namespace boxlift::worker {

/// Gives up, for good and for all threads to come, what a conversion does not need: other files
/// than those that are open, the network, other processes and programs, code made at run time.
/// Called before anything of a media file is read, while there is one thread. Returns which of that
/// the system cannot take away, in words for the log; empty when it is all gone.
std::string enterSandbox();

} // namespace boxlift::worker
