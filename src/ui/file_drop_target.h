#pragma once

#include <QList>
#include <QQuickItem>
#include <QUrl>
#include <QtQml/qqmlregistration.h>

class QMimeData;

namespace boxlift {

/// Where files can be dropped. A drag is taken when it carries a file of this machine; a drop that
/// arrives is taken whatever it holds. The files are copied at best, never moved.
class FileDropTarget : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool targeted READ isTargeted NOTIFY targetedChanged FINAL)

public:
    explicit FileDropTarget(QQuickItem* parent = nullptr);

    /// While a drag that is taken is over the item.
    bool isTargeted() const { return m_targeted; }

signals:
    void targetedChanged();
    /// All that the drop holds, files or not.
    void dropped(const QList<QUrl>& urls);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void setTargeted(bool targeted);

    bool m_targeted = false;
    /// What the drag carries. A source may be gone by the time of the drop.
    QList<QUrl> m_urls;
};

} // namespace boxlift
