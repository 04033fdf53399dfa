pragma ComponentBehavior: Bound
import QtQuick
import Boxlift

// Around the control that has the keyboard's focus.
Rectangle {
    id: root

    property real innerRadius: Theme.controlRadius

    anchors.fill: parent
    anchors.margins: -Theme.focusWidth
    radius: innerRadius + Theme.focusWidth
    color: "transparent"
    border {
        width: Theme.focusWidth
        color: Theme.focusRing
    }
}
