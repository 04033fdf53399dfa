#pragma once

#include <QDesktopServices>
#include <QList>
#include <QObject>
#include <QUrl>

namespace boxlift::test {

/// Takes the files and folders that the desktop would be asked to open.
class UrlCatcher : public QObject {
    Q_OBJECT

public:
    UrlCatcher() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "take"); }
    ~UrlCatcher() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    QList<QUrl> caught;

public slots:
    void take(const QUrl& url) { caught.append(url); }
};

} // namespace boxlift::test
