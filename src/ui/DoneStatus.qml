pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Boxlift

// A file that has been converted.
ColumnLayout {
    id: root

    required property Job job

    spacing: Theme.scaled(3)

    ProgressBar {
        objectName: "progressBar"
        Layout.fillWidth: true
        Layout.topMargin: Theme.scaled(2)
        Layout.bottomMargin: Theme.scaled(2)
        value: 1
        tint: Theme.greenBar
    }

    PlanLine {
        objectName: "doneLine"
        Layout.fillWidth: true
        mode: root.job.usedMode
        text: Texts.done(root.job.usedMode, root.job.seconds)
    }
}
