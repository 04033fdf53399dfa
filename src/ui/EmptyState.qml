pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Boxlift

// What the window shows while there are no files: an invitation.
Item {
    id: root

    signal chooseFiles

    ColumnLayout {
        anchors.centerIn: parent
        width: parent.width - Theme.scaled(48)
        spacing: Theme.scaled(12)

        Symbol {
            Layout.alignment: Qt.AlignHCenter
            name: "arrow.down.doc.fill"
            size: 56
        }

        Label {
            objectName: "emptyTitle"
            Layout.alignment: Qt.AlignHCenter
            text: "Drop videos or audio here"
            font {
                pixelSize: Theme.title2
                weight: Font.DemiBold
            }
        }

        Label {
            objectName: "emptyHint"
            Layout.fillWidth: true
            text: "MOV, MP4, M4V, M4A, MP3, WAV, AIFF, FLAC and anything else macOS can open"
            color: Theme.secondary
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
        }

        Button {
            objectName: "emptyAddFiles"
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: Theme.scaled(4)
            large: true
            text: "Add Files…"
            onClicked: root.chooseFiles()
        }
    }
}
