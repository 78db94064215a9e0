#pragma once

#include <functional>
#include <string>

namespace Tessaly {

enum class ExportFormat { MeasurementFile, Table, Video };

// The name of an export of the file `sourceFileName`: "TSYexport_" before it; for a table or a video
// an ending ".vqd" (in any case) is replaced by ".tsv" or ".avi".
std::string exportFileName(const std::string& sourceFileName, ExportFormat format);

// `folder` + "/" + `fileName`, or, when that is taken, the first free of "_2", "_3", ... put between
// the base name and the suffix (split at the last dot of the name).
std::string uniqueExportPath(const std::string& folder, const std::string& fileName,
    const std::function<bool(const std::string&)>& taken);

} // namespace Tessaly
