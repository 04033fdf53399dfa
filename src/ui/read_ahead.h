#pragma once

#include <thread>

namespace boxlift {

/// Reads on a thread of its own what the first frame needs and would have to wait for: the system's
/// fonts, and libraries behind what the window is made of. The first thing in main(). Nothing
/// depends on it: what it has not read when it is needed is read then. Its end waits for the
/// thread.
class ReadAhead {
public:
    ReadAhead();

private:
    std::jthread m_thread;
};

} // namespace boxlift
