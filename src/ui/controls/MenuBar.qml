pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Boxlift

T.MenuBar {
    id: root

    implicitWidth: contentItem.implicitWidth
    implicitHeight: Theme.scaled(28)
    leftPadding: Theme.scaled(8)
    Accessible.role: Accessible.MenuBar

    delegate: MenuBarItem {}

    contentItem: Row {
        spacing: root.spacing

        Repeater {
            model: root.contentModel
        }
    }

    background: Rectangle {
        color: Theme.bar

        Rectangle {
            anchors.bottom: parent.bottom
            width: parent.width
            height: 1
            color: Theme.divider
        }
    }
}
