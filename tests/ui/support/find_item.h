#pragma once

#include <QQuickItem>
#include <QString>

namespace boxlift::test {

enum class Sight { any, shown };

/// The item of that object name at or below `from`; null when there is none.
QQuickItem* findItem(QQuickItem* from, const QString& name, Sight sight);

} // namespace boxlift::test
