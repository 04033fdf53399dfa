#pragma once

#include <QSettings>

#include "queue/preferences.h"

namespace boxlift {

/// The user's own, kept where the system keeps such things, under the name Boxlift.
class UserPreferences : public Preferences {
public:
    std::optional<std::string> string(std::string_view key) const override;
    void setString(std::string_view key, const std::string& value) override;

private:
    QSettings m_settings{QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("Boxlift"),
                         QStringLiteral("Boxlift")};
};

} // namespace boxlift
