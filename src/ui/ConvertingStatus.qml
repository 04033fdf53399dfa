pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Boxlift

// A file that converts.
ColumnLayout {
    id: root

    required property Job job

    spacing: Theme.scaled(3)

    PlanLine {
        Layout.fillWidth: true
        visible: root.job.hasPlan
        mode: root.job.planMode
        text: root.job.planDetail
    }

    ProgressBar {
        objectName: "progressBar"
        Layout.fillWidth: true
        Layout.topMargin: Theme.scaled(2)
        value: root.job.progress
    }

    // Not a part of the layout, which would take a second frame for each new width.
    Item {
        implicitHeight: percent.implicitHeight

        Label {
            id: percent

            objectName: "percentText"
            text: Texts.percent(root.job.progress)
            color: Theme.secondary
            font.pixelSize: Theme.caption2
        }
    }
}
