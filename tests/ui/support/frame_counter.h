#pragma once

#include <chrono>

#include <QQuickWindow>
#include <QTest>

namespace boxlift::test {

/// Counts the frames that a window draws.
class FrameCounter {
public:
    explicit FrameCounter(QQuickWindow& window) {
        QObject::connect(&window, &QQuickWindow::afterRendering, &m_context,
                         [this] { ++m_frames; });
    }

    int during(std::chrono::milliseconds time) {
        m_frames = 0;
        QTest::qWait(static_cast<int>(time.count()));
        return m_frames;
    }

private:
    QObject m_context;
    int m_frames = 0;
};

} // namespace boxlift::test
