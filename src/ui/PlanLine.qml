pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Boxlift

// How a file is or was converted, and what that means.
RowLayout {
    id: root

    // Job.Boxlift or Job.Reencode.
    required property int mode
    required property string text

    spacing: Theme.scaled(6)

    ModeBadge {
        Layout.alignment: Qt.AlignTop
        mode: root.mode
    }

    Label {
        objectName: "planText"
        Layout.fillWidth: true
        text: root.text
        color: Theme.secondary
        wrapMode: Text.Wrap
        font.pixelSize: Theme.caption
    }
}
