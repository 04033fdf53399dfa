pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Boxlift

// A file that is being analysed.
RowLayout {
    id: root

    // Whether anybody can see it: only then the wheel turns.
    required property bool inSight

    spacing: Theme.scaled(6)

    BusyIndicator {
        running: root.inSight
    }

    Label {
        objectName: "statusText"
        Layout.fillWidth: true
        text: "Reading…"
        font.pixelSize: Theme.caption
    }
}
