pragma ComponentBehavior: Bound
import QtQuick
import Boxlift

// Around the control that has the keyboard's focus; made when it is wanted.
Loader {
    id: root

    property real innerRadius: Theme.controlRadius

    anchors.fill: parent
    anchors.margins: -Theme.focusWidth
    active: false
    source: "FocusRingFrame.qml"
    onLoaded: (item as FocusRingFrame).radius = Qt.binding(() => root.innerRadius + Theme.focusWidth)
}
