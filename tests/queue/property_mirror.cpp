#include "queue/property_mirror.h"

#include <QMetaProperty>

namespace boxlift::test {

PropertyMirror::PropertyMirror(const QObject& object) : m_object(object) {
    const QMetaObject* type = object.metaObject();
    const QMetaMethod slot = metaObject()->method(metaObject()->indexOfSlot("refresh()"));
    for (int i = 0; i < type->propertyCount(); ++i) {
        const QMetaProperty property = type->property(i);
        m_values[i] = property.read(&object);
        if (property.hasNotifySignal())
            connect(&object, property.notifySignal(), this, slot, Qt::UniqueConnection);
    }
}

void PropertyMirror::refresh() {
    const QMetaObject* type = m_object.metaObject();
    for (int i = 0; i < type->propertyCount(); ++i) {
        if (type->property(i).notifySignalIndex() == senderSignalIndex())
            m_values[i] = type->property(i).read(&m_object);
    }
}

QStringList PropertyMirror::outdated() const {
    QStringList names;
    for (auto value = m_values.cbegin(); value != m_values.cend(); ++value) {
        const QMetaProperty property = m_object.metaObject()->property(value.key());
        if (property.read(&m_object) != value.value())
            names += property.name();
    }
    return names;
}

QStringList silentProperties(const QMetaObject& type) {
    QStringList names;
    for (int i = type.propertyOffset(); i < type.propertyCount(); ++i) {
        if (!type.property(i).isConstant() && !type.property(i).hasNotifySignal())
            names += type.property(i).name();
    }
    return names;
}

} // namespace boxlift::test
