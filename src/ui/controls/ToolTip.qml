pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Boxlift

T.ToolTip {
    id: root

    x: parent ? Math.round((parent.width - implicitWidth) / 2) : 0
    y: parent ? parent.height + Theme.scaled(4) : 0
    implicitWidth: implicitContentWidth + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    horizontalPadding: Theme.scaled(8)
    verticalPadding: Theme.scaled(4)
    // Stays inside the window.
    margins: 4
    delay: 600
    timeout: 8000
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent | T.Popup.CloseOnReleaseOutsideParent

    contentItem: Label {
        Accessible.ignored: true
        text: root.text
        font.pixelSize: Theme.caption
    }

    background: Rectangle {
        radius: Theme.scaled(5)
        color: Theme.popup
        border {
            width: 1
            color: Theme.popupOutline
        }
    }
}
