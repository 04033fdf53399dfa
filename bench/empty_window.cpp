#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

/// The least that a Qt Quick program can show, to compare with.
int main(int argc, char** argv) {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    QGuiApplication application(argc, argv);
    QQmlApplicationEngine engine;
    engine.loadData("import QtQuick\n"
                    "import QtQuick.Window\n"
                    "Window { visible: true; width: 780; height: 520; title: 'Empty' }");
    return QGuiApplication::exec();
}
