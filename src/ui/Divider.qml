pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import Boxlift

Rectangle {
    id: root

    Layout.fillWidth: true
    implicitHeight: 1
    color: Theme.divider
}
