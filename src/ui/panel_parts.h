#pragma once

#include <initializer_list>

class QWidget;

namespace boxlift {

/// Hides the parts of a file panel that have these object names. Names that Qt no longer uses are
/// passed over. Main thread.
void hideParts(const QWidget& panel, std::initializer_list<const char*> names);

} // namespace boxlift
