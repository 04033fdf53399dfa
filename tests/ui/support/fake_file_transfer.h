#pragma once

#include <QObject>
#include <QStringList>
#include <QVariantMap>

namespace boxlift::test {

/// A documents portal that has the files of one key.
class FakeFileTransfer : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.FileTransfer")

public:
    QString key;
    QStringList files;

public slots:
    // NOLINTNEXTLINE(readability-identifier-naming)
    QStringList RetrieveFiles(const QString& asked, const QVariantMap&) {
        return asked == key ? files : QStringList();
    }
};

} // namespace boxlift::test
