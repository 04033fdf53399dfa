pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Boxlift

T.ProgressBar {
    id: root

    property color tint: Theme.accent

    implicitWidth: Theme.scaled(200)
    implicitHeight: Theme.scaled(6)
    Accessible.role: Accessible.ProgressBar
    Accessible.name: "Progress"

    background: Rectangle {
        radius: height / 2
        color: Theme.track
    }

    contentItem: Item {
        Rectangle {
            visible: root.visualPosition > 0
            // Never narrower than round.
            width: Math.max(parent.height, root.visualPosition * parent.width)
            height: parent.height
            radius: height / 2
            color: root.tint
        }
    }
}
