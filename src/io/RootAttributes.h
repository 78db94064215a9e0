#pragma once

#include "io/VQDMetadata.h"

namespace H5 {
class Group;
}

namespace Tessaly {

// Turns the attributes of a measurement file's root group into text metadata and polygon gates, in
// one pass over them. An attribute that can't be read is reported with its position and skipped;
// attributes of kinds that carry no metadata are dropped. The caller holds hdf5Mutex() and catches
// what the library throws outside the attributes themselves.
void readRootAttributes(const H5::Group& root, VQDMetadata& metadata);

} // namespace Tessaly
