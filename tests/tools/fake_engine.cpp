#include "tools/fake_engine.h"

#include <chrono>
#include <thread>

#include "model/cancelled.h"

namespace boxlift::drive::test {

void waitForStop(const std::stop_token& stop) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!stop.stop_requested() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    throw Cancelled();
}

Mode copyAtOnce(const ConvertCall& call, const Converter::Progress& progress,
                const std::stop_token& stop) {
    progress(0.0);
    return boxlift::test::copyAtOnce(call, progress, stop);
}

} // namespace boxlift::drive::test
