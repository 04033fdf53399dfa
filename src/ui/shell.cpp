#include "ui/shell.h"

#include <utility>

#include <QFileOpenEvent>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

#include "ui/panel_palette.h"
#include "ui/system_menu_bar.h"
#include "ui/window_icon.h"
#include "ui/window_module.h"

namespace boxlift {

Shell::Shell(Engine engine)
    : m_chooser([this] { return palette(); }),
      m_queue({std::move(engine), m_chooser, m_preferences, UserFolders::ofSystem()}),
      m_presence(m_queue, QDBusConnection::sessionBus(),
                 [this] { return window() && window()->isActive(); }),
      m_systemMenuBar(makeSystemMenuBar(m_queue)),
      m_qml(std::make_unique<QQmlApplicationEngine>()) {
    addWindowModule(*m_qml);
    qApp->installEventFilter(this);
    connect(&m_presence, &RunPresence::windowWanted, this, &Shell::raiseWindow);
}

Shell::~Shell() = default;

QQuickWindow* Shell::openWindow() {
    m_qml->setInitialProperties({{QStringLiteral("queue"), QVariant::fromValue(&m_queue)},
                                 {QStringLiteral("hasMenuBar"), m_systemMenuBar == nullptr}});
    m_qml->load(QUrl(QStringLiteral("qrc:/qt/qml/Boxlift/Main.qml")));
    if (!window())
        return nullptr;
    // After the first frame, which it would hold up.
    connect(
        window(), &QQuickWindow::frameSwapped, window(),
        [] { QGuiApplication::setWindowIcon(windowIcon()); }, Qt::SingleShotConnection);
    raiseWindow();
    return window();
}

void Shell::raiseWindow() {
    // Out of the icon too, as large as it was.
    window()->setWindowStates(window()->windowStates() & ~Qt::WindowMinimized);
    window()->show();
    window()->raise();
    window()->requestActivate();
}

QQuickWindow* Shell::window() const {
    const QList<QObject*> windows = m_qml->rootObjects();
    return windows.isEmpty() ? nullptr : qobject_cast<QQuickWindow*>(windows.constFirst());
}

bool Shell::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qApp && event->type() == QEvent::FileOpen) {
        m_queue.add({static_cast<QFileOpenEvent*>(event)->url()});
        return true;
    }
    return QObject::eventFilter(watched, event);
}

QPalette Shell::palette() const {
    if (!window())
        return QGuiApplication::palette();
    return panelPalette(*window()->property("theme").value<QObject*>());
}

} // namespace boxlift
