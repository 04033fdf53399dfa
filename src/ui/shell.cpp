#include "ui/shell.h"

#include <utility>

#include <QFileOpenEvent>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

#include "ui/panel_palette.h"
#include "ui/window_icon.h"
#include "ui/window_module.h"

namespace boxlift {

Shell::Shell(Engine engine)
    : m_chooser([this] { return palette(); }),
      m_queue({std::move(engine), m_chooser, m_preferences, UserFolders::ofSystem()}),
      m_qml(std::make_unique<QQmlApplicationEngine>()) {
    addWindowModule(*m_qml);
    qApp->installEventFilter(this);
}

Shell::~Shell() = default;

QQuickWindow* Shell::openWindow() {
    m_qml->setInitialProperties({{QStringLiteral("queue"), QVariant::fromValue(&m_queue)}});
    m_qml->load(QUrl(QStringLiteral("qrc:/qt/qml/Boxlift/Main.qml")));
    if (m_qml->rootObjects().isEmpty())
        return nullptr;
    auto* window = qobject_cast<QQuickWindow*>(m_qml->rootObjects().constFirst());
    // After the first frame, which it would hold up.
    connect(
        window, &QQuickWindow::frameSwapped, window,
        [] { QGuiApplication::setWindowIcon(windowIcon()); }, Qt::SingleShotConnection);
    window->show();
    window->raise();
    window->requestActivate();
    return window;
}

bool Shell::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qApp && event->type() == QEvent::FileOpen) {
        m_queue.add({static_cast<QFileOpenEvent*>(event)->url()});
        return true;
    }
    return QObject::eventFilter(watched, event);
}

QPalette Shell::palette() const {
    const QList<QObject*> windows = m_qml->rootObjects();
    if (windows.isEmpty())
        return QGuiApplication::palette();
    return panelPalette(*windows.constFirst()->property("theme").value<QObject*>());
}

} // namespace boxlift
