#pragma once

#include <QString>
#include <QUrl>

#include "model/mode.h"

namespace boxlift {

/// The fraction as a whole percentage, cut rather than rounded, so that 100% means the end. It is
/// a fatal error when `progress` is not a finite number of a sensible size.
QString percentText(double progress);

/// What became of a file. Numbers look the same everywhere.
QString doneText(Mode mode, double seconds);

/// The mode's word, in capitals.
QString badgeText(Mode mode);

/// A folder's path as people read it: `home` is "~", wherever it occurs.
QString folderText(const QUrl& folder, const QString& home);

} // namespace boxlift
