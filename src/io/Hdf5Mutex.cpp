#include "io/Hdf5Mutex.h"

namespace Tessaly {

std::recursive_mutex& hdf5Mutex()
{
    // A function-local static is constructed on first use, so static initialisers of other
    // translation units may already lock it safely.
    static std::recursive_mutex mutex;
    return mutex;
}

} // namespace Tessaly
