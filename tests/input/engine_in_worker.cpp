#include "input/engine_under_test.h"
#include "queue/worker_engine.h"

namespace boxlift::test {

Engine engineUnderTest() {
    return workerEngine({.program = BOXLIFT_WORKER});
}

} // namespace boxlift::test
