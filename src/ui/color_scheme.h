#pragma once

#include <optional>

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <QVariant>
#include <QtQml/qqmlregistration.h>

class QJSEngine;
class QQmlEngine;

namespace boxlift {

/// Whether the window is to be dark: what the desktop's settings portal says, and where it says
/// nothing, what the system's palette looks like. Follows both. Main thread, owned by the engine.
class ColorScheme : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool dark READ dark NOTIFY darkChanged FINAL)

public:
    /// Asks without waiting: until the answer comes, the palette decides.
    explicit ColorScheme(const QDBusConnection& bus, QObject* parent = nullptr);
    static ColorScheme* create(QQmlEngine* engine, QJSEngine* scriptEngine);

    bool dark() const { return m_dark; }

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    void darkChanged();

private slots:
    void takeSetting(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void ask(QDBusConnection bus);
    void take(const QVariant& value);
    void refresh();

    /// What the portal prefers; nothing when it is absent or has no preference.
    std::optional<bool> m_preferred;
    bool m_dark = false;
};

} // namespace boxlift
