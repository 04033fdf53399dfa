pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Boxlift

// The application's one window.
T.ApplicationWindow {
    id: root

    required property Queue queue
    // Its own: false where the system has one for it.
    required property bool hasMenuBar
    // For the panels, which are not made of QML.
    readonly property QtObject theme: Theme

    title: "Boxlift"
    minimumWidth: Theme.scaled(780)
    minimumHeight: Theme.scaled(520) + (hasMenuBar ? menuBar.height : 0)
    width: minimumWidth
    height: minimumHeight
    color: Theme.window

    menuBar: MenuBar {
        visible: root.hasMenuBar

        Menu {
            title: "File"

            MenuItem {
                objectName: "menuAddFiles"
                text: "Add Files…"
                keys: Texts.openKeys
                onTriggered: opening.start()
            }

            MenuItem {
                objectName: "menuQuit"
                text: "Quit"
                keys: Texts.quitKeys
                onTriggered: Qt.quit()
            }
        }
    }

    // The menu has to be closed before the panel opens.
    Timer {
        id: opening

        interval: 0
        onTriggered: root.queue.chooseFiles()
    }

    // qmllint disable unqualified
    Shortcut {
        sequences: [StandardKey.Open]
        enabled: root.hasMenuBar
        context: Qt.ApplicationShortcut
        onActivated: root.queue.chooseFiles()
    }

    Shortcut {
        sequences: [StandardKey.Quit]
        context: Qt.ApplicationShortcut
        onActivated: Qt.quit()
    }
    // qmllint enable unqualified

    ContentView {
        anchors.fill: parent
        queue: root.queue
    }
}
