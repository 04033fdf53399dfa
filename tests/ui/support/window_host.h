#pragma once

#include <memory>
#include <optional>

#include <QByteArray>
#include <QPoint>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSize>
#include <QVariantMap>

namespace boxlift::test {

/// A window that shows one item of QML, and hands and eyes for the test. Items are found by their
/// object names.
class WindowHost {
public:
    /// `qml` is the item, without the imports.
    explicit WindowHost(const QByteArray& qml, QSize size = {480, 320});
    /// The item is of the module's type `type`; it fills the window.
    WindowHost(const QString& type, const QVariantMap& properties, QSize size);
    ~WindowHost();

    QQuickWindow& window() { return m_window; }
    QQmlEngine& engine() { return m_engine; }
    QQuickItem& root() { return *m_root; }

    /// Null when there is none.
    QQuickItem* item(const QString& name);
    /// Null when there is none that can be seen.
    QQuickItem* shown(const QString& name);
    /// The property "text" of a shown item; nothing when it is not shown.
    std::optional<QString> text(const QString& name);

    void click(QQuickItem* item);
    void hover(QQuickItem* item);
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    /// The name of the item that has the keyboard's focus.
    QString focused() const;
    QImage picture();

private:
    void own(QObject* made, const QString& errors);
    /// Returns when the first frame is drawn.
    void show(QSize size);
    QPoint centre(const QQuickItem* item) const;

    QQmlEngine m_engine;
    QQuickWindow m_window;
    std::unique_ptr<QQuickItem> m_root;
};

} // namespace boxlift::test
