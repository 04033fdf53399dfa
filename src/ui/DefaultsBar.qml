pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Boxlift

// The settings that new files take.
Rectangle {
    id: root

    required property Queue queue
    readonly property bool forVideo: !queue.defaultTargetIsAudio

    implicitHeight: layout.implicitHeight + Theme.scaled(16)
    color: Theme.bar

    RowLayout {
        id: layout

        anchors {
            fill: parent
            leftMargin: Theme.scaled(16)
            rightMargin: Theme.scaled(16)
            topMargin: Theme.scaled(8)
            bottomMargin: Theme.scaled(8)
        }
        spacing: Theme.scaled(12)

        Label {
            text: "New files"
            color: Theme.secondary
        }

        ComboBox {
            objectName: "defaultTarget"
            Layout.preferredWidth: Theme.scaled(190)
            title: "Target"
            model: Texts.targets
            currentIndex: root.queue.defaultTarget
            onActivated: index => root.queue.defaultTarget = index
        }

        ComboBox {
            objectName: "defaultSize"
            Layout.preferredWidth: Theme.scaled(130)
            visible: root.forVideo
            title: "Size"
            model: Texts.sizes
            currentIndex: root.queue.defaultSize
            onActivated: index => root.queue.defaultSize = index
        }

        CheckBox {
            objectName: "defaultRemoveAudio"
            visible: root.forVideo
            text: "Remove audio"
            checked: root.queue.defaultRemoveAudio
            onToggled: root.queue.defaultRemoveAudio = checked
        }

        Item {
            Layout.fillWidth: true
        }

        Button {
            objectName: "applyToAll"
            text: "Apply to All"
            enabled: root.queue.jobs.count > 0 && !root.queue.isRunning
            onClicked: root.queue.applyDefaultsToAll()
        }
    }
}
