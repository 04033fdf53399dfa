#include "ui/panel_parts.h"

#include <QWidget>

namespace boxlift {

void hideParts(const QWidget& panel, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        if (auto* part = panel.findChild<QWidget*>(QLatin1String(name)))
            part->hide();
    }
}

} // namespace boxlift
