pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Boxlift

// The output folder, and the commands for the whole list.
Rectangle {
    id: root

    required property Queue queue

    implicitHeight: layout.implicitHeight + Theme.scaled(20)
    color: Theme.bar

    RowLayout {
        id: layout

        anchors {
            fill: parent
            leftMargin: Theme.scaled(16)
            rightMargin: Theme.scaled(16)
            topMargin: Theme.scaled(10)
            bottomMargin: Theme.scaled(10)
        }
        spacing: Theme.scaled(12)

        Symbol {
            name: "folder"
            size: 18
        }

        Label {
            objectName: "outputPath"
            Layout.fillWidth: true
            // Whole pixels: layouts cut fractions off, and a name would lose its middle to that.
            Layout.preferredWidth: Math.ceil(implicitWidth)
            Layout.maximumWidth: Theme.scaled(260)
            text: Texts.folder(root.queue.outputDir)
            elide: Text.ElideMiddle
            maximumLineCount: 1
        }

        Button {
            objectName: "chooseFolder"
            text: "Choose…"
            onClicked: root.queue.chooseOutputFolder()
        }

        Button {
            objectName: "openFolder"
            text: "Open"
            onClicked: Reveal.show(root.queue.outputDir)
        }

        Item {
            Layout.fillWidth: true
        }

        Button {
            objectName: "addFiles"
            text: "Add Files…"
            onClicked: root.queue.chooseFiles()
        }

        Button {
            objectName: "clearFinished"
            text: "Clear Finished"
            enabled: root.queue.hasFinished
            onClicked: root.queue.clearFinished()
        }

        Button {
            objectName: "run"
            Layout.preferredWidth: Theme.scaled(96)
            text: root.queue.isRunning ? "Stop" : "Convert All"
            prominent: !root.queue.isRunning
            enabled: root.queue.isRunning || root.queue.pendingCount > 0
            onClicked: root.queue.isRunning ? root.queue.task?.cancel() : root.queue.startAll()
        }
    }
}
