#include "drive/stop_on_signals.h"

#include <csignal>

#include <pthread.h>

namespace boxlift::drive {

namespace {

sigset_t stopSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

} // namespace

StopOnSignals::StopOnSignals() {
    const sigset_t signals = stopSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    m_thread = std::thread([this] { waitForSignals(); });
}

StopOnSignals::~StopOnSignals() {
    m_isEnding = true;
    pthread_kill(m_thread.native_handle(), SIGINT);
    m_thread.join();
}

void StopOnSignals::waitForSignals() {
    const sigset_t signals = stopSignals();
    int signal = 0;
    while (sigwait(&signals, &signal) == 0 && !m_isEnding)
        m_stop.request_stop();
}

} // namespace boxlift::drive
