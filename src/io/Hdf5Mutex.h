#pragma once

#include <mutex>

namespace Tessaly {

// The one lock around every call into the HDF5 library and around the column caches of all readers.
// The library build is not assumed to be thread-safe. The lock is recursive because locked operations
// call each other (reading a filtered trace reads the stored one).
std::recursive_mutex& hdf5Mutex();

} // namespace Tessaly
