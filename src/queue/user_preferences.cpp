#include "queue/user_preferences.h"

#include <QString>
#include <QVariant>

namespace boxlift {

namespace {

QString name(std::string_view key) {
    return QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size()));
}

/// Text where the bytes are text, so that people can read and write the file.
QVariant stored(const std::string& value) {
    const QString text = QString::fromStdString(value);
    return text.toStdString() == value ? QVariant(text)
                                       : QVariant(QByteArray::fromStdString(value));
}

} // namespace

std::optional<std::string> UserPreferences::string(std::string_view key) const {
    const QVariant value = m_settings.value(name(key));
    // Commas without quotes, as somebody may have typed them, make a list: its text is lost.
    if (value.typeId() != QMetaType::QString && value.typeId() != QMetaType::QByteArray)
        return std::nullopt;
    return value.toByteArray().toStdString();
}

void UserPreferences::setString(std::string_view key, const std::string& value) {
    m_settings.setValue(name(key), stored(value));
    // Remembered also when the application does not end well.
    m_settings.sync();
}

} // namespace boxlift
