pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Boxlift

// A file that is being analysed.
RowLayout {
    id: root

    spacing: Theme.scaled(6)

    BusyIndicator {
        running: true
    }

    Label {
        objectName: "statusText"
        Layout.fillWidth: true
        text: "Reading…"
        font.pixelSize: Theme.caption
    }
}
