#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <string_view>
#include <vector>

#include <QApplication>

#include "queue/file_url.h"
#include "queue/worker_engine.h"
#include "queue/worker_program.h"
#include "ui/desktop/application_id.h"
#include "ui/desktop/single_instance.h"
#include "ui/read_ahead.h"
#include "ui/shell.h"
#include "ui/window_rendering.h"

namespace {

/// What the desktop hands over at the start: paths or addresses of files, in any bytes.
std::vector<std::filesystem::path> handedOver(std::span<char*> arguments) {
    std::vector<std::filesystem::path> paths;
    for (const std::string_view argument : arguments) {
        if (argument.empty())
            continue;
        const QByteArray bytes(argument.data(), static_cast<qsizetype>(argument.size()));
        const auto path = argument.starts_with("file:")
                              ? boxlift::filePath(QUrl::fromEncoded(bytes))
                              : std::filesystem::absolute(argument);
        if (!path.empty())
            paths.push_back(path);
    }
    return paths;
}

} // namespace

int main(int argc, char** argv) {
    const boxlift::ReadAhead ahead;
    boxlift::preferSoftwareRendering();
    QApplication application(argc, argv);
    // It takes over the user's language, and with it a decimal comma, which texts here do not have.
    std::setlocale(LC_NUMERIC, "C");
    QApplication::setApplicationName(QStringLiteral("boxlift"));
    QApplication::setApplicationDisplayName(QStringLiteral("Boxlift"));
    QApplication::setDesktopFileName(boxlift::applicationId);
    const auto files = handedOver(std::span(argv, static_cast<std::size_t>(argc)).subspan(1));
    boxlift::SingleInstance instance(QDBusConnection::sessionBus());
    if (instance.handOver(files))
        return EXIT_SUCCESS;
    boxlift::Shell shell(boxlift::workerEngine({.program = boxlift::workerProgram()}));
    if (!shell.openWindow())
        return EXIT_FAILURE;
    QObject::connect(&instance, &boxlift::SingleInstance::opened, &shell.queue(),
                     [&shell](const QList<QUrl>& urls) { shell.queue().add(urls); });
    QObject::connect(&instance, &boxlift::SingleInstance::activated, &shell,
                     &boxlift::Shell::raiseWindow);
    shell.queue().addPaths(files);
    return QApplication::exec();
}
