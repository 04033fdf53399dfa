#pragma once

#include <functional>
#include <optional>

#include <QByteArray>
#include <QDBusConnection>
#include <QList>
#include <QUrl>

class QMimeData;
class QObject;

namespace boxlift {

/// Files that a drag carries by way of the desktop's documents portal, as it is between programs
/// of which one is in a sandbox: the drag has a key, the portal has the files.
namespace file_transfer {

/// The key that the drag has; nothing when it is of another kind.
std::optional<QString> key(const QMimeData& data);

/// Asks for the files of a key, which can be done once. `take` gets them later, or nothing when the
/// portal has none, unless `owner` has gone. Main thread; never waits.
void retrieve(const QDBusConnection& bus, const QString& key, QObject* owner,
              std::function<void(const QList<QUrl>&)> take);

} // namespace file_transfer

} // namespace boxlift
