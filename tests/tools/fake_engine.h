#pragma once

#include <stop_token>

#include "support/fake_engine.h"

namespace boxlift::drive::test {

using boxlift::test::ConvertCall;
using boxlift::test::filmInfo;
using boxlift::test::silentInfo;
using boxlift::test::songInfo;

/// Waits until a stop is requested, at most 10 s, then throws Cancelled as the engine does.
[[noreturn]] void waitForStop(const std::stop_token& stop);

/// Reports 0.0 and 1.0, makes the output and says that it copied.
Mode copyAtOnce(const ConvertCall& call, const Converter::Progress& progress,
                const std::stop_token& stop);

/// What is not told to its conversions is `copyAtOnce` of this namespace.
class FakeEngine : public boxlift::test::FakeEngine {
public:
    FakeEngine() { convertsOtherwise(copyAtOnce); }
};

} // namespace boxlift::drive::test
