#include "ui/support/window_host.h"

#include <stdexcept>

#include <QImage>
#include <QQmlComponent>
#include <QSignalSpy>
#include <QTest>

#include "ui/support/find_item.h"
#include "ui/window_module.h"

namespace boxlift::test {

WindowHost::WindowHost(const QByteArray& qml, QSize size) {
    addWindowModule(m_engine);
    QQmlComponent component(&m_engine);
    component.setData("import QtQuick\nimport QtQuick.Layouts\nimport Boxlift\n" + qml,
                      QUrl(QStringLiteral("qrc:/test.qml")));
    own(component.create(), component.errorString());
    show(size);
}

WindowHost::WindowHost(const QString& type, const QVariantMap& properties, QSize size) {
    addWindowModule(m_engine);
    QQmlComponent component(&m_engine,
                            QUrl(QStringLiteral("qrc:/qt/qml/Boxlift/%1.qml").arg(type)));
    own(component.createWithInitialProperties(properties), component.errorString());
    m_root->setSize(size);
    show(size);
}

WindowHost::~WindowHost() {
    m_window.close();
}

void WindowHost::own(QObject* made, const QString& errors) {
    m_root.reset(qobject_cast<QQuickItem*>(made));
    if (!m_root)
        throw std::runtime_error(errors.toStdString());
    m_root->setParentItem(m_window.contentItem());
}

void WindowHost::show(QSize size) {
    // A list makes its items for the first frame, which may come after the window is active.
    const QSignalSpy frames(&m_window, &QQuickWindow::frameSwapped);
    m_window.resize(size);
    m_window.show();
    m_window.requestActivate();
    if (!QTest::qWaitForWindowActive(&m_window) ||
        !QTest::qWaitFor([&] { return !frames.isEmpty(); }))
        throw std::runtime_error("The window does not show");
}

QQuickItem* WindowHost::item(const QString& name) {
    return findItem(m_window.contentItem(), name, Sight::any);
}

QQuickItem* WindowHost::shown(const QString& name) {
    return findItem(m_window.contentItem(), name, Sight::shown);
}

std::optional<QString> WindowHost::text(const QString& name) {
    const QQuickItem* item = shown(name);
    return item ? std::optional(item->property("text").toString()) : std::nullopt;
}

QPoint WindowHost::centre(const QQuickItem* item) const {
    return item->mapToScene(QPointF(item->width() / 2, item->height() / 2)).toPoint();
}

void WindowHost::click(QQuickItem* item) {
    QTest::mouseClick(&m_window, Qt::LeftButton, {}, centre(item));
}

void WindowHost::hover(QQuickItem* item) {
    QTest::mouseMove(&m_window, centre(item));
}

void WindowHost::key(Qt::Key key, Qt::KeyboardModifiers modifiers) {
    QTest::keyClick(&m_window, key, modifiers);
}

QString WindowHost::focused() const {
    const QQuickItem* item = m_window.activeFocusItem();
    return item ? item->objectName() : QString();
}

QImage WindowHost::picture() {
    return m_window.grabWindow();
}

} // namespace boxlift::test
