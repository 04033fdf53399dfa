pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Boxlift

T.Menu {
    id: root

    implicitWidth: Theme.scaled(220)
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    padding: Theme.scaled(5)
    margins: 0
    overlap: 1

    delegate: MenuItem {}

    contentItem: ListView {
        implicitHeight: contentHeight
        model: root.contentModel
        interactive: false
        currentIndex: root.currentIndex
    }

    background: PopupSurface {}
}
