#include "ui/shell.h"

#include <utility>

#include <QFileOpenEvent>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQmlComponent>
#include <QQuickWindow>

#include "ui/panel_palette.h"
#include "ui/system_font.h"
#include "ui/system_menu_bar.h"
#include "ui/window_icon.h"
#include "ui/window_module.h"

namespace boxlift {

namespace {

constexpr QLatin1String mainFile("Main.qml");
constexpr QLatin1String contentFile("ContentView.qml");

QUrl urlOf(QLatin1String file) {
    return QUrl(QStringLiteral("qrc:/qt/qml/Boxlift/") + file);
}

/// Has begun, on a thread of its own, to read what the window is made of.
std::unique_ptr<QQmlApplicationEngine> makeQmlEngine() {
    auto engine = std::make_unique<QQmlApplicationEngine>();
    addWindowModule(*engine);
    // The engine owns them; they keep what was read.
    for (const QLatin1String file : {mainFile, contentFile})
        new QQmlComponent(engine.get(), urlOf(file), QQmlComponent::Asynchronous, engine.get());
    return engine;
}

} // namespace

Shell::Shell(Engine engine)
    : m_qml(makeQmlEngine()), m_prepareEngine(engine.prepare),
      m_chooser([this] { return palette(); }),
      m_queue({std::move(engine), m_chooser, m_preferences, UserFolders::ofSystem()}),
      m_presence(m_queue, QDBusConnection::sessionBus(),
                 [this] { return window() && window()->isActive(); }),
      m_systemMenuBar(makeSystemMenuBar(m_queue)) {
    qApp->installEventFilter(this);
    connect(&m_presence, &RunPresence::windowWanted, this, &Shell::raiseWindow);
}

Shell::~Shell() {
    // The window ends before what it shows.
    m_qml.reset();
}

QQuickWindow* Shell::openWindow() {
    // Meanwhile the window's files are read.
    SystemFont::prepare();
    m_qml->setInitialProperties({{QStringLiteral("queue"), QVariant::fromValue(&m_queue)},
                                 {QStringLiteral("hasMenuBar"), m_systemMenuBar == nullptr}});
    m_qml->load(urlOf(mainFile));
    if (!window())
        return nullptr;
    // Queued: the frame is on the screen only when control is back in the event loop.
    connect(window(), &QQuickWindow::frameSwapped, this, &Shell::finishStart,
            static_cast<Qt::ConnectionType>(Qt::QueuedConnection | Qt::SingleShotConnection));
    raiseWindow();
    window()->setProperty("opened", true);
    return window()->property("filled").toBool() ? window() : nullptr;
}

/// After the first frame, which all this would hold up.
void Shell::finishStart() {
    window()->setProperty("seen", true);
    QGuiApplication::setWindowIcon(windowIcon());
    // Files that came with the start have asked for what they need themselves.
    if (m_prepareEngine && m_queue.jobs().empty())
        m_prepareEngine();
}

void Shell::raiseWindow() {
    // Out of the icon too, as large as it was.
    window()->setWindowStates(window()->windowStates() & ~Qt::WindowMinimized);
    window()->show();
    window()->raise();
    window()->requestActivate();
}

QQuickWindow* Shell::window() const {
    if (!m_qml)
        return nullptr;
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
