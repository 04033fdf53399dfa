#pragma once

#include <coroutine>
#include <memory>

#include <QSocketNotifier>

#include "queue/mailbox.h"

namespace boxlift {

/// Runs on the main thread what others leave for it, in order, a slice of some milliseconds in
/// each turn of the event loop, so that the window stays live however much there is. Main thread.
class TurnQueue {
public:
    TurnQueue();
    ~TurnQueue();
    TurnQueue(const TurnQueue&) = delete;
    TurnQueue& operator=(const TurnQueue&) = delete;

    const std::shared_ptr<Mailbox>& mailbox() const { return m_mailbox; }

    /// `co_await turns.nextTurn()` goes on in a later turn of the event loop.
    auto nextTurn() { return NextTurn{*m_mailbox}; }

    /// Runs everything that waits, and what that brings with it, at once.
    void drain();

private:
    struct NextTurn {
        Mailbox& mailbox;

        bool await_ready() const noexcept { return false; }
        void await_suspend(std::coroutine_handle<> handle) const { mailbox.post(handle); }
        void await_resume() const noexcept {}
    };

    void runSlice();

    std::shared_ptr<Mailbox> m_mailbox = std::make_shared<Mailbox>();
    QSocketNotifier m_notifier;
};

} // namespace boxlift
