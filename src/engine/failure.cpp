#include "engine/failure.h"

#include "model/convert_error.h"

namespace boxlift::Converter {

void throwFailure(const std::exception_ptr& error, const char* sentence) {
    if (error)
        std::rethrow_exception(error);
    throw ConvertError(sentence);
}

} // namespace boxlift::Converter
