#include "ui/system_menu_bar.h"

#include <QMenu>
#include <QMenuBar>

#include "queue/queue.h"

namespace boxlift {

// Quit, and what else belongs to the application's own menu, Qt puts there by itself.
std::unique_ptr<QObject> makeSystemMenuBar(Queue& queue) {
    auto bar = std::make_unique<QMenuBar>();
    QMenu* file = bar->addMenu(QStringLiteral("File"));
    QAction* add = file->addAction(QStringLiteral("Add Files…"), &queue, &Queue::chooseFiles);
    add->setShortcut(QKeySequence::Open);
    return bar;
}

} // namespace boxlift
