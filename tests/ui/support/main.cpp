#include <cstdio>
#include <cstdlib>

#include <gtest/gtest.h>

#include <QApplication>
#include <QStandardPaths>
#include <QString>
#include <QTemporaryDir>

namespace {

/// What the platform without a screen says about itself.
bool isAboutPlatform(const QString& message) {
    return message.startsWith(QStringLiteral("This plugin does not support "));
}

/// Each warning, of QML above all, fails the case that it comes in.
void failOnWarning(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (type == QtFatalMsg) {
        std::fprintf(stderr, "%s\n", qPrintable(message));
        std::abort();
    }
    if (type == QtDebugMsg || type == QtInfoMsg || isAboutPlatform(message))
        return;
    ADD_FAILURE() << (context.file ? context.file : "") << ": " << message.toStdString();
}

/// A test sees neither the screen nor the session nor the files of who runs it.
void leaveDesktop(const QTemporaryDir& runtimeFolder) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
    qputenv("XDG_RUNTIME_DIR", runtimeFolder.path().toLocal8Bit());
    qunsetenv("QT_STYLE_OVERRIDE");
    QStandardPaths::setTestModeEnabled(true);
}

} // namespace

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const QTemporaryDir runtimeFolder;
    leaveDesktop(runtimeFolder);
    qInstallMessageHandler(failOnWarning);
    QApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
