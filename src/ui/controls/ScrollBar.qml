pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Boxlift

T.ScrollBar {
    id: root

    implicitWidth: Theme.scaled(12)
    implicitHeight: Theme.scaled(12)
    padding: 3
    minimumSize: 0.06
    visible: policy !== T.ScrollBar.AlwaysOff && size < 1
    Accessible.role: Accessible.ScrollBar

    contentItem: Rectangle {
        radius: Math.min(width, height) / 2
        color: Qt.alpha(Theme.primary, root.pressed ? 0.55 : root.hovered ? 0.42 : 0.26)
    }
}
