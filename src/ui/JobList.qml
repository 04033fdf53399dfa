pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Boxlift

// The cards of all files, made as far as they are seen.
ListView {
    id: root

    required property Queue queue

    model: queue.jobs
    spacing: Theme.scaled(8)
    topMargin: Theme.scaled(16)
    bottomMargin: Theme.scaled(16)
    clip: true
    boundsBehavior: Flickable.StopAtBounds
    reuseItems: true
    // Cards beyond the edges that are made already, in pixels.
    cacheBuffer: 1200

    T.ScrollBar.vertical: ScrollBar {
        objectName: "scrollBar"
        policy: T.ScrollBar.AlwaysOn
    }

    delegate: FocusScope {
        id: cell

        required property Job job
        required property int index

        width: ListView.view.width
        implicitHeight: card.implicitHeight
        // A card that waits to be used again rests.
        ListView.onPooled: card.visible = false
        ListView.onReused: card.visible = true
        // Who goes through the cards with the keyboard sees where they are.
        onActiveFocusChanged: {
            if (activeFocus)
                root.positionViewAtIndex(index, ListView.Contain)
        }

        JobKeeper {
            id: keeper

            job: cell.job
        }

        JobRow {
            id: card

            x: Theme.scaled(16)
            width: cell.width - Theme.scaled(32)
            job: keeper.job
            queue: root.queue
            inSight: cell.y < root.contentY + root.height && cell.y + cell.height > root.contentY
        }
    }
}
