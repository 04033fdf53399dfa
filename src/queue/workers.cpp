#include "queue/workers.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace boxlift {

Workers::Workers(Engine engine)
    : engine(std::move(engine)),
      analyses("analysis", std::max(1U, std::thread::hardware_concurrency())),
      conversions("conversion", 1) {}

Workers::~Workers() {
    end();
}

void Workers::end() {
    stop.request_stop();
    analyses.end();
    conversions.end();
    turns.drain();
}

} // namespace boxlift
