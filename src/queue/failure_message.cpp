#include "queue/failure_message.h"

#include <exception>

#include "engine/media/error.h"
#include "model/convert_error.h"

namespace boxlift {

std::string failureMessage() {
    try {
        throw;
    } catch (const ConvertError& error) {
        return error.errorDescription();
    } catch (const media::Error& error) {
        media::logError(error);
        return error.what();
    } catch (const std::exception& error) {
        media::logError(error);
    } catch (...) {
    }
    return std::string(media::sentence(media::ErrorKind::unknown));
}

} // namespace boxlift
