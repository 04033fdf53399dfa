pragma ComponentBehavior: Bound
import QtQuick
import Boxlift

Rectangle {
    color: "transparent"
    border {
        width: Theme.focusWidth
        color: Theme.focusRing
    }
}
