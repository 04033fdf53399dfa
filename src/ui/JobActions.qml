pragma ComponentBehavior: Bound
import QtQuick
import Boxlift

// What can be done with one file. The place of the first button stays where it is, so that the
// settings of all cards line up.
Row {
    id: root

    required property Job job
    required property Queue queue

    spacing: Theme.scaled(4)

    Item {
        width: Theme.controlHeight
        height: Theme.controlHeight

        IconButton {
            objectName: "reveal"
            visible: root.job.state === Job.Done
            symbol: "magnifyingglass"
            help: "Reveal in Finder"
            onClicked: Reveal.show(root.job.output)
        }

        IconButton {
            objectName: "convert"
            visible: (root.job.state === Job.Ready || root.job.state === Job.Failed) && root.job.canConvert
            enabled: !root.queue.isRunning
            symbol: "play.fill"
            help: "Convert this file"
            onClicked: root.queue.convert(root.job)
        }
    }

    IconButton {
        objectName: "remove"
        symbol: "xmark"
        help: "Remove from queue"
        onClicked: root.queue.remove(root.job)
    }
}
