#include "ui/panel_palette.h"

#include <QColor>
#include <QObject>
#include <QVariant>

namespace boxlift {

namespace {

struct Entry {
    QPalette::ColorRole role;
    const char* property;
};

constexpr Entry entries[] = {
    {QPalette::Window, "window"},
    {QPalette::WindowText, "primary"},
    {QPalette::Base, "card"},
    {QPalette::AlternateBase, "bar"},
    {QPalette::Text, "primary"},
    {QPalette::PlaceholderText, "secondary"},
    {QPalette::Button, "control"},
    {QPalette::ButtonText, "primary"},
    {QPalette::Highlight, "accentFill"},
    {QPalette::HighlightedText, "accentText"},
    {QPalette::ToolTipBase, "popup"},
    {QPalette::ToolTipText, "primary"},
};

constexpr QPalette::ColorRole textRoles[] = {QPalette::WindowText, QPalette::Text,
                                             QPalette::ButtonText};

QColor color(const QObject& theme, const char* property) {
    return theme.property(property).value<QColor>();
}

} // namespace

QPalette panelPalette(const QObject& theme) {
    // The shades of the edges follow from these two.
    QPalette palette(color(theme, "control"), color(theme, "window"));
    for (const Entry& entry : entries)
        palette.setColor(entry.role, color(theme, entry.property));
    for (const QPalette::ColorRole role : textRoles)
        palette.setColor(QPalette::Disabled, role, color(theme, "disabledText"));
    return palette;
}

} // namespace boxlift
