#pragma once

#include "io/VQDMetadata.h"

#include <cstdint>
#include <string>
#include <vector>

namespace Tessaly {

class VQDReader;

// A tab-separated table of one dataset's events. The header lines begin with "#": the title, the
// export's date and event count, the changed sample name when there is one, every metadata attribute
// in key order, and a "#" alone. Then the feature labels, and one line per event with the values at
// 17 significant digits, so that every double reads back as the same double. An event beyond the end
// of a column leaves its cell empty.
struct TsvExport
{
    std::vector<std::string> features;
    std::vector<std::int32_t> events;
    // Empty when the display name is the sample name of the file.
    std::string changedSampleName;
};

// Writes the table to `path`; false, with a line on the standard error stream, when the file can't
// be created or written completely.
bool writeTsv(
    const std::string& path, VQDReader& reader, const VQDMetadata& metadata, const TsvExport& table);

// A double as printf's "%.17g" writes it, without the locale.
std::string formatSignificant17(double value);

} // namespace Tessaly
