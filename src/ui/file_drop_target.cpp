#include "ui/file_drop_target.h"

#include <algorithm>
#include <utility>

#include <QDragEnterEvent>
#include <QDragLeaveEvent>
#include <QDragMoveEvent>
#include <QDropEvent>
#include <QMimeData>

#include "queue/file_url.h"

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
    setTargeted(std::any_of(m_urls.begin(), m_urls.end(), isFile));
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
    emit dropped(std::exchange(m_urls, {}));
}

void FileDropTarget::setTargeted(bool targeted) {
    if (targeted == m_targeted)
        return;
    m_targeted = targeted;
    emit targetedChanged();
}

} // namespace boxlift
