pragma Singleton
pragma ComponentBehavior: Bound
import QtQuick
import Boxlift

// Sizes, fonts and colours of the window, in both appearances.
QtObject {
    id: root

    readonly property bool dark: ColorScheme.dark
    readonly property real scale: SystemFont.scale

    // A length as designed, for the system's size of text. Kept even where it was, so that what is
    // centred stays on whole pixels at a scale of one and a half.
    function scaled(length: real): int {
        return root.scale === 1 ? length : 2 * Math.round(length * root.scale / 2)
    }

    // Fonts, in pixels.
    readonly property string family: SystemFont.family
    readonly property int title2: SystemFont.title2
    readonly property int headline: SystemFont.headline
    readonly property int body: SystemFont.body
    readonly property int caption: SystemFont.caption
    readonly property int caption2: SystemFont.caption2

    // Controls.
    readonly property int controlHeight: scaled(26)
    readonly property int largeControlHeight: scaled(32)
    readonly property int controlRadius: scaled(6)
    readonly property int cardRadius: scaled(10)
    readonly property int focusWidth: 3
    readonly property real disabledOpacity: 0.42

    // Surfaces, from the back to the front.
    readonly property color window: dark ? "#1e1f22" : "#f3f3f5"
    readonly property color bar: dark ? "#26272b" : "#fafafb"
    readonly property color card: dark ? "#2b2c31" : "#ffffff"
    readonly property color popup: dark ? "#303136" : "#ffffff"
    readonly property color divider: dark ? Qt.rgba(1, 1, 1, 0.09) : Qt.rgba(0, 0, 0, 0.10)
    readonly property color popupOutline: dark ? Qt.rgba(1, 1, 1, 0.14) : Qt.rgba(0, 0, 0, 0.14)
    readonly property real shadowOpacity: dark ? 0.055 : 0.022

    // Text: readable on each of the surfaces.
    readonly property color primary: dark ? "#f2f2f4" : "#1d1d20"
    readonly property color secondary: dark ? "#a2a3aa" : "#68686f"
    readonly property color disabledText: dark ? "#6d6e75" : "#a4a4aa"
    readonly property color green: dark ? "#36d15f" : "#0d7030"
    readonly property color orange: dark ? "#ffa42e" : "#a14700"
    readonly property color red: dark ? "#ff6961" : "#cf1d17"

    // The accent as a line, and as a ground for text.
    readonly property color accent: dark ? "#2f8cff" : "#0a6cff"
    readonly property color accentFill: dark ? "#1a72e8" : "#0a6cff"
    readonly property color accentText: "#ffffff"
    readonly property color focusRing: Qt.alpha(accent, 0.5)

    // Progress.
    readonly property color greenBar: dark ? "#30c357" : "#34b857"
    readonly property color track: dark ? Qt.rgba(1, 1, 1, 0.13) : Qt.rgba(0, 0, 0, 0.09)

    // Faces of controls.
    readonly property color control: dark ? "#3b3d43" : "#ffffff"
    readonly property color controlHover: dark ? "#44464d" : "#f7f7f9"
    readonly property color controlDown: dark ? "#33353a" : "#e9e9ec"
    readonly property color controlOutline: dark ? Qt.rgba(1, 1, 1, 0.10) : Qt.rgba(0, 0, 0, 0.17)
    readonly property color controlShade: dark ? Qt.rgba(0, 0, 0, 0.35) : Qt.rgba(0, 0, 0, 0.07)
    readonly property color boxOutline: dark ? Qt.rgba(1, 1, 1, 0.24) : Qt.rgba(0, 0, 0, 0.30)
}
