pragma ComponentBehavior: Bound
import QtQuick
import Boxlift

// An icon in one colour.
Image {
    id: root

    required property string name
    // Even, which keeps it on whole pixels.
    property int size: 16
    property color color: Theme.secondary

    readonly property int side: 2 * Math.round(size * Theme.scale / 2)

    width: side
    height: side
    sourceSize {
        width: side
        height: side
    }
    source: "image://symbol/" + name + "/" + color.toString().slice(1)
    Accessible.ignored: true
}
