#include "ui/window_rendering.h"

#include <QQuickWindow>
#include <QSGRendererInterface>

namespace boxlift {

void preferSoftwareRendering() {
    for (const char* variable : {"QT_QUICK_BACKEND", "QSG_RHI_BACKEND"}) {
        if (qEnvironmentVariableIsSet(variable))
            return;
    }
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

} // namespace boxlift
