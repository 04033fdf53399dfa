pragma ComponentBehavior: Bound
import QtQuick
import Boxlift

// The mode's word on a capsule of its colour.
Rectangle {
    id: root

    required property int mode
    readonly property color tint: mode === Job.Boxlift ? Theme.green : Theme.orange

    implicitWidth: label.implicitWidth + Theme.scaled(12)
    implicitHeight: label.implicitHeight + Theme.scaled(4)
    radius: height / 2
    color: Qt.alpha(tint, 0.2)

    Label {
        id: label

        objectName: "badgeText"
        anchors.centerIn: parent
        text: Texts.badge(root.mode)
        color: root.tint
        font {
            pixelSize: Theme.caption2
            weight: Font.Bold
        }
    }
}
