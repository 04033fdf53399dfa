pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Templates as T
import Boxlift

// A picker: one of a few texts.
T.ComboBox {
    id: root

    // What is picked; not shown.
    required property string title

    implicitWidth: Theme.scaled(120)
    implicitHeight: Theme.controlHeight
    leftPadding: Theme.scaled(10)
    rightPadding: Theme.scaled(24)
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    opacity: enabled ? 1 : Theme.disabledOpacity
    Accessible.role: Accessible.ComboBox
    Accessible.name: title
    Accessible.description: displayText

    contentItem: Label {
        Accessible.ignored: true
        text: root.displayText
        elide: Text.ElideRight
        verticalAlignment: Text.AlignVCenter
    }

    indicator: Symbol {
        x: root.width - width - Theme.scaled(8)
        y: Math.round((root.height - height) / 2)
        name: "chevron.updown"
        size: 12
    }

    background: ControlFace {
        hovered: root.hovered
        down: root.pressed
        focused: root.visualFocus
    }

    delegate: ComboBoxDelegate {
        required property int index

        width: ListView.view ? ListView.view.width : 0
        text: root.textAt(index)
        current: root.currentIndex === index
        highlighted: root.highlightedIndex === index
    }

    popup: T.Popup {
        y: root.height + Theme.scaled(4)
        width: Math.max(root.width, Theme.scaled(130))
        implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
        padding: Theme.scaled(5)
        // Inside the window: near the lower edge it opens upwards.
        margins: Theme.scaled(6)

        contentItem: ListView {
            implicitHeight: contentHeight
            clip: true
            model: root.popup.visible ? root.delegateModel : null
            currentIndex: root.highlightedIndex
            boundsBehavior: Flickable.StopAtBounds
        }

        background: PopupSurface {}
    }
}
