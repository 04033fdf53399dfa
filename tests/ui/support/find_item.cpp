#include "ui/support/find_item.h"

namespace boxlift::test {

QQuickItem* findItem(QQuickItem* from, const QString& name, Sight sight) {
    if (from->objectName() == name && (sight == Sight::any || from->isVisible()))
        return from;
    for (QQuickItem* child : from->childItems()) {
        if (QQuickItem* found = findItem(child, name, sight))
            return found;
    }
    return nullptr;
}

} // namespace boxlift::test
