#pragma once

#include "ExampleEvents.h"

#include <string>

namespace Tessaly::ExampleData {

enum class Compression { None, Deflate, Zstd };

struct WriteOptions
{
    Compression compression = Compression::None;
    bool singlePrecision = false; // store scalar columns as float32 instead of float64
    bool images = true; // /events/image and /events/mask
    bool traces = true; // /events/trace/fl1_raw ...
};

// Writes a complete measurement file: scalar columns, frames, masks, traces and the metadata
// attributes an instrument run carries. Returns false and prints the reason on failure.
bool writeExampleFile(const std::string& path, const ExampleSettings& settings, const ExampleEvents& events,
    const WriteOptions& options);

} // namespace Tessaly::ExampleData
