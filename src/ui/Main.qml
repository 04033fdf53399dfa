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
    // The window is on its way to the screen: what it holds is made meanwhile.
    property bool opened: false
    readonly property bool filled: content.status === Loader.Ready
    // It has been drawn: what the first frame did not need is made.
    property bool seen: false

    title: "Boxlift"
    minimumWidth: Theme.scaled(780)
    minimumHeight: Theme.scaled(520) + (hasMenuBar ? menuBar.height : 0)
    width: minimumWidth
    height: minimumHeight
    color: Theme.window

    menuBar: MenuBar {
        id: bar

        visible: root.hasMenuBar

        MenuBarItem {
            id: placeholder

            text: "File"
        }
    }

    // A bar learns of a menu's end only when the menu is put into it as a whole.
    Loader {
        id: fileMenu

        onLoaded: {
            bar.removeItem(placeholder)
            bar.insertMenu(0, item as T.Menu)
        }
    }

    onOpenedChanged: content.setSource("ContentView.qml", { queue: queue })
    onSeenChanged: {
        if (hasMenuBar)
            fileMenu.setSource("FileMenu.qml", { queue: queue })
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

    Loader {
        id: content

        anchors.fill: parent
    }
}
