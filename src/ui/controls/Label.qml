pragma ComponentBehavior: Bound
import QtQuick
import Boxlift

// A text of the window. Plain: names of files are shown as they are.
Text {
    id: root

    color: Theme.primary
    textFormat: Text.PlainText
    Accessible.role: Accessible.StaticText
    Accessible.name: text
    font {
        family: Theme.family
        pixelSize: Theme.body
    }
}
