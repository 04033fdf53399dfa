#pragma once

namespace boxlift {

/// A descriptor that an event loop can wait for and that any thread can make readable.
class WakeUp {
public:
    /// Throws std::system_error when the system is out of descriptors.
    WakeUp();
    ~WakeUp();
    WakeUp(const WakeUp&) = delete;
    WakeUp& operator=(const WakeUp&) = delete;

    /// Readable after signal() until clear().
    int descriptor() const { return m_read; }

    // Any thread.
    void signal() noexcept;
    void clear() noexcept;

private:
    int m_read = -1;
    int m_write = -1;
};

} // namespace boxlift
