pragma ComponentBehavior: Bound
import QtQuick
import Boxlift

// A file's own settings. They rest while it converts.
Column {
    id: root

    required property Job job

    spacing: Theme.scaled(6)
    enabled: job.state !== Job.Converting

    Row {
        anchors.right: parent.right
        spacing: Theme.scaled(8)

        ComboBox {
            objectName: "target"
            width: Theme.scaled(100)
            title: "Target"
            model: Texts.shortTargets
            currentIndex: root.job.target
            onActivated: index => root.job.target = index
        }

        ComboBox {
            objectName: "size"
            width: Theme.scaled(120)
            visible: !root.job.targetIsAudio
            title: "Size"
            model: Texts.sizes
            currentIndex: root.job.size
            onActivated: index => root.job.size = index
        }
    }

    CheckBox {
        objectName: "removeAudio"
        anchors.right: parent.right
        visible: !root.job.targetIsAudio && root.job.hasVideo
        text: "Remove audio"
        fontSize: Theme.caption
        checked: root.job.removeAudio
        onToggled: root.job.removeAudio = checked
    }
}
