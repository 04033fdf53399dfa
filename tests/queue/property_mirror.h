#pragma once

#include <QHash>
#include <QObject>
#include <QVariant>

namespace boxlift::test {

/// What an interface knows of an object: it reads each property once and again only when the object
/// says that it changed.
class PropertyMirror : public QObject {
    Q_OBJECT

public:
    explicit PropertyMirror(const QObject& object);

    /// The properties of which it has not been told, by name; none is as it should be.
    QStringList outdated() const;

private slots:
    void refresh();

private:
    const QObject& m_object;
    QHash<int, QVariant> m_values;
};

/// The properties of a class's own that are neither constant nor have a signal.
QStringList silentProperties(const QMetaObject& type);

} // namespace boxlift::test
