#include "ui/system_menu_bar.h"

namespace boxlift {

std::unique_ptr<QObject> makeSystemMenuBar(Queue&) {
    return nullptr;
}

} // namespace boxlift
