#pragma once

#include <exception>
#include <string>

#include "engine/media/error.h"
#include "model/cancelled.h"
#include "model/convert_error.h"

namespace boxlift::fakes {

/// An error of the media layer to be planted and found again.
inline std::exception_ptr planted(media::ErrorKind kind = media::ErrorKind::unknown) {
    return std::make_exception_ptr(media::Error(kind, "planted operation", "planted.file", "gone"));
}

/// What `operation` throws, the very object; null when it returns.
template <typename Operation>
std::exception_ptr exceptionOf(Operation operation) {
    try {
        operation();
        return nullptr;
    } catch (...) {
        return std::current_exception();
    }
}

/// How `operation` ends: "success", "cancelled", or the type and the text of the error.
template <typename Operation>
std::string outcomeOf(Operation operation) {
    try {
        operation();
        return "success";
    } catch (const Cancelled&) {
        return "cancelled";
    } catch (const ConvertError& error) {
        return "ConvertError: " + error.message();
    } catch (const media::Error& error) {
        return "media::Error: " + error.technical();
    } catch (const std::exception& error) {
        return std::string("std::exception: ") + error.what();
    }
}

} // namespace boxlift::fakes
