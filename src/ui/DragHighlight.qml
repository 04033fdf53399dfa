pragma ComponentBehavior: Bound
import QtQuick
import Boxlift

// Around all that files can be dropped on, while they are held above it.
DashedOutline {
    objectName: "dragHighlight"
    color: Theme.accent
    scaling: Theme.scale
}
