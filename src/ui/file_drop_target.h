#pragma once

#include <optional>

#include <QDBusConnection>
#include <QList>
#include <QQuickItem>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

class QMimeData;

namespace boxlift {

/// Where files can be dropped. A drag is taken when it carries a file of this machine; a drop that
/// arrives is taken whatever it holds. The files are copied at best, never moved. Where the drag
/// comes out of a sandbox, its files come by way of the desktop's documents portal.
class FileDropTarget : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool targeted READ isTargeted NOTIFY targetedChanged FINAL)

public:
    explicit FileDropTarget(QQuickItem* parent = nullptr);

    /// While a drag that is taken is over the item.
    bool isTargeted() const { return m_targeted; }

    /// Where the portal is asked for; the session bus unless set.
    void setBus(const QDBusConnection& bus) { m_bus = bus; }

signals:
    void targetedChanged();
    /// All that the drop holds, files or not. Comes later where the portal has to be asked.
    void dropped(const QList<QUrl>& urls);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void setTargeted(bool targeted);
    void retrieve(const QString& key, const QList<QUrl>& otherwise);

    bool m_targeted = false;
    /// What the drag carries. A source may be gone by the time of the drop.
    QList<QUrl> m_urls;
    std::optional<QString> m_transferKey;
    std::optional<QDBusConnection> m_bus;
};

} // namespace boxlift
