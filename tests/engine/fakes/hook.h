#pragma once

#include <exception>
#include <functional>

namespace boxlift::fakes {

/// What a test does, or nothing, at a certain point of a fake's work.
using Hook = std::function<void()>;

inline void call(const Hook& hook) {
    if (hook)
        hook();
}

/// Throws a planted error, if there is one.
inline void throwIf(const std::exception_ptr& error) {
    if (error)
        std::rethrow_exception(error);
}

} // namespace boxlift::fakes
