pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Boxlift

// The cards of all files, made as far as they are seen.
ListView {
    id: root

    required property Queue queue

    objectName: "jobList"
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

    // What is seen stays where it is while a card above it grows or shrinks. The list itself sees to
    // that for the topmost of the cards that are made, and for no other.
    function keepPlace(card: Item, index: int, growth: real) {
        const above = card.y + card.height - growth <= root.contentY
        if (above && !root.moving && root.itemAtIndex(index - 1))
            root.contentY += growth
    }

    delegate: FocusScope {
        id: cell

        required property Job job
        required property int index

        // A card that is made or used again takes some frames to find its height; what it does
        // afterwards must not move the others.
        property bool placed: false
        property real placedHeight: 0

        width: ListView.view.width
        implicitHeight: card.implicitHeight
        // A card that waits to be used again rests.
        ListView.onPooled: card.visible = false
        ListView.onReused: card.visible = true
        onHeightChanged: {
            if (placed)
                root.keepPlace(cell, index, height - placedHeight)
            placedHeight = height
        }
        onJobChanged: {
            placed = false
            placing.restart()
        }
        // Who goes through the cards with the keyboard sees where they are.
        onActiveFocusChanged: {
            if (activeFocus)
                root.positionViewAtIndex(index, ListView.Contain)
        }

        Timer {
            id: placing

            interval: 100
            running: true
            onTriggered: cell.placed = true
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
