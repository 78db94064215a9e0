#pragma once

#include <QString>
#include <QStringList>
#include <map>
#include <string>

namespace Tessaly {

struct DatasetEntry;

// The value of `key` in a metadata section as text, empty when it is absent.
QString metadataText(const std::map<std::string, std::string>& section, const char* key);

// Details that tell datasets apart at a glance: the flow rate when it is a number ("0.06 µL/s"),
// "Reservoir" for measurements in the reservoir, and the run index ("#3"). The list label puts
// "Reservoir" first; the status line keeps the order above.
QStringList datasetDetails(const DatasetEntry& entry, bool reservoirFirst);

// A tool tip that shows `text` as it stands. Qt draws a tool tip as rich text when it looks like
// markup, so text from a file or a user ("<b>Ctrl</b>") is passed as escaped rich text then.
QString plainToolTip(const QString& text);

// The name a dataset gets when it has none of its own: the sample name, else the file name.
QString sampleOrFileName(const DatasetEntry& entry);

} // namespace Tessaly
