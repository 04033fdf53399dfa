pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Boxlift

// A message behind its icon; as many lines as it takes.
RowLayout {
    id: root

    required property string symbol
    required property string text
    required property color color

    spacing: Theme.scaled(4)

    Symbol {
        objectName: "statusIcon"
        Layout.alignment: Qt.AlignTop
        name: root.symbol
        size: 14
        color: root.color
    }

    Label {
        objectName: "statusText"
        Layout.fillWidth: true
        text: root.text
        color: root.color
        wrapMode: Text.Wrap
        font.pixelSize: Theme.caption
    }
}
