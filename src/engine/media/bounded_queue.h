#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace boxlift::media {

/// Hands items from one thread to another, at most `capacity` of them waiting. Ended in one of two
/// ways: close() lets what waits be taken, abort() drops it. Any thread.
template <typename T>
class BoundedQueue {
public:
    explicit BoundedQueue(std::size_t capacity) : m_capacity(capacity) {}
    BoundedQueue(const BoundedQueue&) = delete;
    BoundedQueue& operator=(const BoundedQueue&) = delete;

    /// Waits for room. False when the queue has ended: the item is dropped.
    bool push(T item) {
        std::unique_lock lock(m_mutex);
        m_roomMade.wait(lock, [this] { return hasRoomOrEnded(); });
        if (m_isClosed)
            return false;
        m_items.push_back(std::move(item));
        lock.unlock();
        m_itemAdded.notify_one();
        return true;
    }

    /// Waits for an item. Nothing when the queue has ended and is empty.
    std::optional<T> pop() {
        std::unique_lock lock(m_mutex);
        m_itemAdded.wait(lock, [this] { return !m_items.empty() || m_isClosed; });
        if (m_items.empty())
            return std::nullopt;
        std::optional<T> item(std::move(m_items.front()));
        m_items.pop_front();
        lock.unlock();
        m_roomMade.notify_all();
        return item;
    }

    /// Whether push() would return at once, be it because the queue has ended.
    bool isPushImmediate() const {
        const std::lock_guard lock(m_mutex);
        return hasRoomOrEnded();
    }

    /// Waits for isPushImmediate(), at most `timeout`; tells whether it holds.
    bool waitForRoom(std::chrono::milliseconds timeout) {
        std::unique_lock lock(m_mutex);
        return m_roomMade.wait_for(lock, timeout, [this] { return hasRoomOrEnded(); });
    }

    /// No more items come; those that wait can still be taken.
    void close() {
        {
            const std::lock_guard lock(m_mutex);
            m_isClosed = true;
        }
        wakeAll();
    }

    /// No more items come or go.
    void abort() {
        std::deque<T> dropped;
        {
            const std::lock_guard lock(m_mutex);
            m_isClosed = true;
            dropped.swap(m_items);
        }
        wakeAll();
    }

private:
    bool hasRoomOrEnded() const { return m_isClosed || m_items.size() < m_capacity; }
    void wakeAll() {
        m_itemAdded.notify_all();
        m_roomMade.notify_all();
    }

    const std::size_t m_capacity;
    mutable std::mutex m_mutex;
    std::condition_variable m_itemAdded;
    std::condition_variable m_roomMade;
    std::deque<T> m_items;
    bool m_isClosed = false;
};

} // namespace boxlift::media
