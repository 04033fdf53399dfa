#pragma once

#include <QObject>
#include <QStringList>

namespace boxlift::test {

/// A file manager that remembers what it was to show.
class FakeFileManager : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    QStringList shown;

public slots:
    // NOLINTNEXTLINE(readability-identifier-naming)
    void ShowItems(const QStringList& uris, const QString&) { shown += uris; }
};

} // namespace boxlift::test
