#pragma once

#include <stop_token>

#include "model/cancelled.h"

/// How the engine's operations honour their stop token. Any thread.
namespace boxlift::Converter {

/// Carries out `operation` unless a stop is asked for. Once it is, every failure, whatever its
/// code, is a consequence of the stop and leaves as Cancelled; a success stays a success.
template <typename Operation>
auto cancellable(const std::stop_token& stop, Operation operation) {
    throwIfStopped(stop);
    try {
        return operation();
    } catch (...) {
        throwIfStopped(stop);
        throw;
    }
}

} // namespace boxlift::Converter
