#include "engine/media/thread_name.h"

#include <pthread.h>

namespace boxlift::media {

void setThreadName(const std::string& name) {
    pthread_setname_np(name.c_str());
}

} // namespace boxlift::media
