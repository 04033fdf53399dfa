pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Boxlift

// A wheel of spokes that goes on one step ten times a second: a repaint for each step, not for each
// frame, and none while nobody sees it.
T.BusyIndicator {
    id: root

    implicitWidth: Theme.scaled(14)
    implicitHeight: Theme.scaled(14)
    Accessible.role: Accessible.Indicator
    Accessible.name: "Busy"

    contentItem: BusyWheel {
        turning: root.running && root.visible && Window.visibility !== Window.Hidden
                 && Window.visibility !== Window.Minimized
    }
}
