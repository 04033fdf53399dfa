#include "engine/media/thread_name.h"

#include <pthread.h>

namespace boxlift::media {

void setThreadName(const std::string& name) {
    // A longer name would be refused, not cut (pthread_setname_np(3)).
    constexpr std::string::size_type longest = 15;
    pthread_setname_np(pthread_self(), name.substr(0, longest).c_str());
}

} // namespace boxlift::media
