pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Boxlift

T.MenuBarItem {
    id: root

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Theme.scaled(28)
    horizontalPadding: Theme.scaled(10)
    Accessible.role: Accessible.MenuItem
    Accessible.name: text

    contentItem: Label {
        Accessible.ignored: true
        text: root.text
        verticalAlignment: Text.AlignVCenter
    }

    background: Item {
        Rectangle {
            anchors.fill: parent
            anchors.topMargin: 3
            anchors.bottomMargin: 3
            radius: Theme.scaled(5)
            color: root.highlighted || root.down ? Qt.alpha(Theme.primary, 0.10) : "transparent"
        }
    }
}
