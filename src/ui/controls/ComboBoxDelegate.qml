pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Boxlift

// One choice in a picker's list.
T.ItemDelegate {
    id: root

    // The choice that is in force.
    required property bool current

    implicitHeight: Theme.scaled(24)
    leftPadding: Theme.scaled(24)
    rightPadding: Theme.scaled(10)
    hoverEnabled: true
    Accessible.role: Accessible.ListItem
    Accessible.name: text
    Accessible.selected: current

    contentItem: Label {
        Accessible.ignored: true
        text: root.text
        elide: Text.ElideRight
        verticalAlignment: Text.AlignVCenter
        color: root.highlighted ? Theme.accentText : Theme.primary
    }

    background: Rectangle {
        radius: Theme.scaled(4)
        color: root.highlighted ? Theme.accentFill : "transparent"

        Symbol {
            x: Theme.scaled(6)
            anchors.verticalCenter: parent.verticalCenter
            visible: root.current
            name: "checkmark"
            size: 12
            color: root.highlighted ? Theme.accentText : Theme.primary
        }
    }
}
