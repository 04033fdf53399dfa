#include "ui/window_module.h"

#include <QQmlEngine>

#include "ui/symbol_provider.h"

// Made by Qt's type registrar. The call keeps the linker from leaving it out.
void qml_register_types_Boxlift(); // NOLINT(readability-identifier-naming)

namespace boxlift {

void addWindowModule(QQmlEngine& engine) {
    qml_register_types_Boxlift();
    // Later versions of Qt look there by themselves.
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    engine.addImageProvider(QStringLiteral("symbol"), new SymbolProvider);
}

} // namespace boxlift
