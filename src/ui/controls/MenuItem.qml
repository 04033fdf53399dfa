pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Boxlift

T.MenuItem {
    id: root

    // The keys that do the same, as people know them.
    property string keys: ""

    implicitWidth: Theme.scaled(210)
    implicitHeight: Theme.scaled(24)
    leftPadding: Theme.scaled(10)
    rightPadding: Theme.scaled(10)
    Accessible.role: Accessible.MenuItem
    Accessible.name: text
    Accessible.onPressAction: root.triggered()

    contentItem: Item {
        Label {
            Accessible.ignored: true
            anchors.verticalCenter: parent.verticalCenter
            text: root.text
            color: root.highlighted ? Theme.accentText : Theme.primary
        }

        Label {
            Accessible.ignored: true
            anchors {
                right: parent.right
                verticalCenter: parent.verticalCenter
            }
            text: root.keys
            color: root.highlighted ? Theme.accentText : Theme.secondary
        }
    }

    background: Rectangle {
        radius: Theme.scaled(4)
        color: root.highlighted ? Theme.accentFill : "transparent"
    }
}
