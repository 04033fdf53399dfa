pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Boxlift

// All that the window holds: the list, the settings for new files, the commands.
Item {
    id: root

    required property Queue queue
    readonly property bool empty: queue.jobs.count === 0

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true

            EmptyState {
                objectName: "emptyState"
                anchors.fill: parent
                visible: root.empty
                onChooseFiles: root.queue.chooseFiles()
            }

            // Made with the first file: the window opens sooner without it.
            Loader {
                id: list

                function make() {
                    if (!root.empty && !item)
                        setSource("JobList.qml", { queue: root.queue })
                }

                anchors.fill: parent
                visible: !root.empty
                onVisibleChanged: make()
                Component.onCompleted: make()
            }
        }

        Divider {}

        DefaultsBar {
            Layout.fillWidth: true
            queue: root.queue
        }

        Divider {}

        FooterBar {
            Layout.fillWidth: true
            queue: root.queue
        }
    }

    FileDropTarget {
        id: drop

        objectName: "dropTarget"
        anchors.fill: parent
        onDropped: urls => root.queue.handleDrop(urls)
    }

    Loader {
        anchors {
            fill: parent
            margins: Theme.scaled(8)
        }
        active: drop.targeted
        source: "DragHighlight.qml"
    }
}
