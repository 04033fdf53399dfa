pragma ComponentBehavior: Bound
import QtQuick
import Boxlift

// The raised face of buttons and pickers.
Item {
    id: root

    required property bool hovered
    required property bool down
    required property bool focused
    property bool prominent: false

    readonly property color prominentColor: down ? Qt.tint(Theme.accentFill, Qt.rgba(0, 0, 0, 0.16))
                                          : hovered ? Qt.tint(Theme.accentFill, Qt.rgba(1, 1, 1, 0.10))
                                          : Theme.accentFill

    // The shadow where the face touches the ground.
    Rectangle {
        anchors.fill: parent
        anchors.topMargin: 1
        anchors.bottomMargin: -1
        radius: face.radius
        color: Theme.controlShade
    }

    Rectangle {
        id: face

        anchors.fill: parent
        radius: Theme.controlRadius
        color: root.prominent ? root.prominentColor
             : root.down ? Theme.controlDown
             : root.hovered ? Theme.controlHover
             : Theme.control
        border {
            width: 1
            color: root.prominent ? Qt.darker(face.color, 1.18) : Theme.controlOutline
        }
    }

    FocusRing {
        active: root.focused
    }
}
