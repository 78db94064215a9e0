#pragma once

#include <H5Cpp.h>
#include <string>
#include <vector>

namespace Tessaly {

// Helpers shared by the parts of the reader.

// One line on the standard error stream, through the program's message handler, so that the log
// has it too. Each line goes out whole, so that lines of concurrent readers don't interleave.
void reportReaderError(const std::string& prefix, const std::string& detail);

// The dimensions of a dataspace; empty for a scalar or null one.
std::vector<hsize_t> extentOf(const H5::DataSpace& space);

} // namespace Tessaly
