pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Boxlift

// A button that is an icon alone. Its help is its tooltip, which is made when it is wanted.
T.AbstractButton {
    id: root

    required property string symbol
    required property string help

    implicitWidth: Theme.controlHeight
    implicitHeight: Theme.controlHeight
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    opacity: enabled ? 1 : Theme.disabledOpacity
    Accessible.role: Accessible.Button
    Accessible.name: help
    Accessible.onPressAction: root.clicked()

    contentItem: Item {
        Symbol {
            anchors.centerIn: parent
            name: root.symbol
            size: 14
            color: root.hovered ? Theme.primary : Theme.secondary
        }
    }

    background: Rectangle {
        radius: Theme.controlRadius
        color: root.down ? Qt.alpha(Theme.primary, 0.14)
             : root.hovered ? Qt.alpha(Theme.primary, 0.07)
             : "transparent"

        FocusRing {
            active: root.visualFocus
            anchors.margins: 0
            innerRadius: Theme.controlRadius - Theme.focusWidth
        }
    }

    Loader {
        anchors.fill: parent
        active: (root.hovered || root.visualFocus) && !root.down
        source: "ToolTip.qml"
        onLoaded: {
            const tip = item as ToolTip
            tip.text = root.help
            tip.visible = true
        }
    }
}
