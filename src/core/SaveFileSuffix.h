#pragma once

#include <QString>

namespace Tessaly {

// The file name from a save dialog with the suffix of the chosen filter added when the name has none.
// The suffix is taken from the filter's first pattern of the form "*.ext"; a filter without one, such as
// "All Files (*)", adds nothing. A name that has a suffix keeps it, whichever filter was chosen.
QString withFilterSuffix(const QString& fileName, const QString& selectedFilter);

} // namespace Tessaly
