#include "model/convert_error.h"

#include <utility>

namespace boxlift {

ConvertError::ConvertError(std::string message) : m_message(std::move(message)) {}

bool operator==(const ConvertError& a, const ConvertError& b) {
    return a.message() == b.message();
}

} // namespace boxlift
