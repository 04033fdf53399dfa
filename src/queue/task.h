#pragma once

#include <stop_token>

#include <QObject>

namespace boxlift {

/// The handle of a run: all that can be done with it is to cancel it. The run ends by itself, soon
/// afterwards. Main thread.
class Task : public QObject {
    Q_OBJECT

public:
    Q_INVOKABLE void cancel() { m_stop.request_stop(); }
    bool isCancelled() const { return m_stop.stop_requested(); }
    std::stop_token stopToken() const { return m_stop.get_token(); }

private:
    std::stop_source m_stop;
};

} // namespace boxlift
