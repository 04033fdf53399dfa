#pragma once

#include "queue/engine.h"

namespace boxlift::test {

/// The engine that the tests of this program run on: in this process or in workers.
Engine engineUnderTest();

} // namespace boxlift::test
