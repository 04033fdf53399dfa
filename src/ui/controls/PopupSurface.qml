pragma ComponentBehavior: Bound
import QtQuick
import Boxlift

// The ground of pop-ups, and their shadow: rectangles on top of each other, which need no shader.
Item {
    id: root

    Repeater {
        model: 7

        Rectangle {
            required property int index

            anchors.fill: root
            anchors.margins: -index - 1
            anchors.topMargin: 3 - index
            anchors.bottomMargin: -index - 5
            radius: surface.radius + index + 1
            color: Qt.rgba(0, 0, 0, Theme.shadowOpacity)
        }
    }

    Rectangle {
        id: surface

        anchors.fill: parent
        radius: Theme.scaled(8)
        color: Theme.popup
        border {
            width: 1
            color: Theme.popupOutline
        }
    }
}
