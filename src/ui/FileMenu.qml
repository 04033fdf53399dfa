pragma ComponentBehavior: Bound
import QtQuick
import Boxlift

Menu {
    id: root

    required property Queue queue

    title: "File"

    // The menu has to be closed before the panel opens.
    property Timer opening: Timer {
        interval: 0
        onTriggered: root.queue.chooseFiles()
    }

    MenuItem {
        objectName: "menuAddFiles"
        text: "Add Files…"
        keys: Texts.openKeys
        onTriggered: root.opening.start()
    }

    MenuItem {
        objectName: "menuQuit"
        text: "Quit"
        keys: Texts.quitKeys
        onTriggered: Qt.quit()
    }
}
