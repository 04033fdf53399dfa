#include "ui/file_drop_target.h"

#include <algorithm>
#include <utility>

#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QMimeData>

#include "queue/file_url.h"
#include "ui/desktop/file_transfer.h"

namespace boxlift {

namespace {

bool isFile(const QUrl& url) {
    return !filePath(url).empty();
}

void take(QDropEvent& event) {
    // A source that moves would remove its files afterwards.
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

} // namespace

FileDropTarget::FileDropTarget(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemAcceptsDrops);
}

void FileDropTarget::dragEnterEvent(QDragEnterEvent* event) {
    m_urls = event->mimeData()->urls();
    m_transferKey = file_transfer::key(*event->mimeData());
    setTargeted(m_transferKey || std::any_of(m_urls.begin(), m_urls.end(), isFile));
    if (m_targeted)
        take(*event);
    else
        event->ignore();
}

void FileDropTarget::dragMoveEvent(QDragMoveEvent* event) {
    if (m_targeted)
        take(*event);
    else
        event->ignore();
}

void FileDropTarget::dragLeaveEvent(QDragLeaveEvent* event) {
    setTargeted(false);
    event->accept();
}

void FileDropTarget::dropEvent(QDropEvent* event) {
    setTargeted(false);
    take(*event);
    const QList<QUrl> urls = std::exchange(m_urls, {});
    if (const auto key = std::exchange(m_transferKey, std::nullopt))
        retrieve(*key, urls);
    else
        emit dropped(urls);
}

/// The addresses that such a drag has besides are those of its own sandbox, and a last resort.
void FileDropTarget::retrieve(const QString& key, const QList<QUrl>& otherwise) {
    if (!m_bus)
        m_bus = QDBusConnection::sessionBus();
    if (!m_bus->isConnected()) {
        emit dropped(otherwise);
        return;
    }
    file_transfer::retrieve(*m_bus, key, this, [this, otherwise](const QList<QUrl>& files) {
        emit dropped(files.isEmpty() ? otherwise : files);
    });
}

void FileDropTarget::setTargeted(bool targeted) {
    if (targeted == m_targeted)
        return;
    m_targeted = targeted;
    emit targetedChanged();
}

} // namespace boxlift
