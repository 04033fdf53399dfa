pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Boxlift

T.Button {
    id: root

    property bool large: false
    // The one button of the window that is meant to be pressed next.
    property bool prominent: false

    implicitWidth: Math.max(Theme.scaled(large ? 96 : 64), implicitContentWidth + leftPadding + rightPadding)
    implicitHeight: large ? Theme.largeControlHeight : Theme.controlHeight
    horizontalPadding: Theme.scaled(large ? 16 : 12)
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    opacity: enabled ? 1 : Theme.disabledOpacity
    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.onPressAction: root.clicked()

    contentItem: Label {
        Accessible.ignored: true
        text: root.text
        color: root.prominent ? Theme.accentText : Theme.primary
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        elide: Text.ElideRight
    }

    background: ControlFace {
        hovered: root.hovered
        down: root.down
        focused: root.visualFocus
        prominent: root.prominent
    }
}
