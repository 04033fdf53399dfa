#include "ui/texts.h"

#include <array>
#include <charconv>

#include "queue/file_url.h"

namespace boxlift {

namespace {

// The powers of two that bound 64-bit integers.
constexpr double wholeNumbersEnd = 9223372036854775808.0;

/// Rounded like printf does, which matters for halves, but in every locale with a point.
QString oneDecimal(double number) {
    // Room for the largest number that there is.
    std::array<char, 320> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed, 1);
    return QString::fromLatin1(text.data(), end.ptr - text.data());
}

} // namespace

QString percentText(double progress) {
    const double percent = progress * 100;
    if (!(percent >= -wholeNumbersEnd && percent < wholeNumbersEnd))
        qFatal("A progress of %f cannot be shown", progress);
    return QString::number(static_cast<qint64>(percent)) + QLatin1Char('%');
}

QString doneText(Mode mode, double seconds) {
    const QString time = oneDecimal(seconds) + QLatin1Char('s');
    return mode == Mode::boxlift
               ? QStringLiteral("Boxlifted in ") + time + QStringLiteral(", no quality loss")
               : QStringLiteral("Re-encoded in ") + time;
}

QString badgeText(Mode mode) {
    const QString word =
        mode == Mode::boxlift ? QStringLiteral("Boxlift") : QStringLiteral("Re-encode");
    return word.toUpper();
}

QString folderText(const QUrl& folder, const QString& home) {
    QString path = QString::fromStdString(filePath(folder.adjusted(QUrl::StripTrailingSlash)));
    return home.isEmpty() ? path : path.replace(home, QStringLiteral("~"));
}

} // namespace boxlift
