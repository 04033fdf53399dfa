#include "input/engine_under_test.h"

namespace boxlift::test {

Engine engineUnderTest() {
    return converterEngine();
}

} // namespace boxlift::test
