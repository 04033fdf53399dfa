#include "ui/read_ahead.h"

#include <locale.h>
#include <system_error>

#include <QLibrary>
#include <QString>

#include <fontconfig/fontconfig.h>

namespace boxlift {

namespace {

/// A point in the settings' numbers, whatever main() makes of the process' locale meanwhile.
void useNeutralLocale() {
    uselocale(newlocale(LC_ALL_MASK, "C", nullptr));
}

/// They stay for as long as the process.
void loadLibraries() {
    for (const char* name : {"Qt6QuickTemplates2", "Qt6QuickLayouts", "Qt6QmlWorkerScript"})
        QLibrary(QString::fromLatin1(name), 6).load();
}

void readAll() {
    useNeutralLocale();
    FcInit();
    loadLibraries();
}

} // namespace

ReadAhead::ReadAhead() {
    try {
        m_thread = std::jthread(readAll);
    } catch (const std::system_error&) {
        // Without a thread everything is read when it is needed.
    }
}

} // namespace boxlift
