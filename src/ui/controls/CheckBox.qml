pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Boxlift

T.CheckBox {
    id: root

    property int fontSize: Theme.body

    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: Math.max(Theme.scaled(18), implicitContentHeight)
    spacing: Theme.scaled(6)
    padding: 0
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    opacity: enabled ? 1 : Theme.disabledOpacity
    Accessible.role: Accessible.CheckBox
    Accessible.name: text
    Accessible.checkable: true
    Accessible.checked: checked

    indicator: Rectangle {
        implicitWidth: Theme.scaled(14)
        implicitHeight: Theme.scaled(14)
        y: Math.round((root.height - height) / 2)
        radius: Theme.scaled(4)
        color: root.checked ? Theme.accentFill : root.down ? Theme.controlDown : Theme.control
        border {
            width: 1
            color: root.checked ? Qt.darker(Theme.accentFill, 1.15) : Theme.boxOutline
        }

        Symbol {
            anchors.centerIn: parent
            visible: root.checked
            name: "checkmark"
            size: 10
            color: Theme.accentText
        }

        FocusRing {
            active: root.visualFocus
            innerRadius: parent.radius
        }
    }

    contentItem: Label {
        Accessible.ignored: true
        leftPadding: root.indicator.width + root.spacing
        text: root.text
        font.pixelSize: root.fontSize
        verticalAlignment: Text.AlignVCenter
    }
}
