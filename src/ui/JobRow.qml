pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Boxlift

// The card of one file.
Rectangle {
    id: root

    required property Job job
    required property Queue queue
    property bool inSight: true

    readonly property int padding: Theme.scaled(12)
    readonly property int spacing: Theme.scaled(12)

    implicitHeight: Math.max(kind.height, body.implicitHeight, controls.implicitHeight) + 2 * padding
    height: implicitHeight
    radius: Theme.cardRadius
    color: Theme.card
    border {
        width: 1
        color: Qt.alpha(Theme.primary, 0.08)
    }
    Accessible.role: Accessible.Grouping
    Accessible.name: job.fileName

    Item {
        id: kind

        x: root.padding
        y: root.padding
        width: Theme.scaled(34)
        height: Theme.scaled(34)

        Symbol {
            objectName: "kindIcon"
            anchors.horizontalCenter: parent.horizontalCenter
            name: !root.job.hasInfo ? "questionmark.circle" : root.job.hasVideo ? "film" : "waveform"
            size: 28
        }
    }

    ColumnLayout {
        id: body

        anchors {
            left: kind.right
            leftMargin: root.spacing
            right: controls.left
            rightMargin: root.spacing
        }
        y: root.padding
        spacing: Theme.scaled(5)

        Label {
            objectName: "fileName"
            Layout.fillWidth: true
            text: root.job.fileName
            elide: Text.ElideMiddle
            maximumLineCount: 1
            font {
                pixelSize: Theme.headline
                weight: Font.DemiBold
            }
        }

        Label {
            objectName: "summary"
            Layout.fillWidth: true
            visible: root.job.hasInfo
            text: root.job.summary
            wrapMode: Text.Wrap
            color: Theme.secondary
            font.pixelSize: Theme.caption
        }

        StatusView {
            Layout.fillWidth: true
            job: root.job
            inSight: root.inSight
        }
    }

    RowLayout {
        id: controls

        anchors {
            right: parent.right
            rightMargin: root.padding
        }
        y: root.padding
        spacing: Theme.scaled(8)

        JobSettings {
            objectName: "settings"
            visible: root.job.hasInfo
            job: root.job
        }

        JobActions {
            job: root.job
            queue: root.queue
        }
    }
}
