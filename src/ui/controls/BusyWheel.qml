pragma ComponentBehavior: Bound
import QtQuick
import Boxlift

// The spokes of a busy indicator.
Item {
    id: root

    required property bool turning
    readonly property int spokes: 8
    property int step: 0

    Timer {
        interval: 100
        repeat: true
        running: root.turning
        onTriggered: root.step = (root.step + 1) % root.spokes
    }

    Repeater {
        model: root.spokes

        Rectangle {
            id: spoke

            required property int index

            x: (root.width - width) / 2
            width: root.width / 7
            height: root.height * 0.28
            radius: width / 2
            antialiasing: true
            color: Theme.primary
            opacity: 0.16 + 0.64 * ((index - root.step + root.spokes) % root.spokes) / (root.spokes - 1)
            transform: Rotation {
                origin.x: spoke.width / 2
                origin.y: root.height / 2
                angle: spoke.index * 360 / root.spokes
            }
        }
    }
}
