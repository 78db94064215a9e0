#include "io/ReaderSupport.h"

#include <QtGlobal>
#include <algorithm>

namespace Tessaly {

void reportReaderError(const std::string& prefix, const std::string& detail)
{
    qWarning("%s", (prefix + detail).c_str());
}

std::vector<hsize_t> extentOf(const H5::DataSpace& space)
{
    const int rank = space.getSimpleExtentNdims();
    std::vector<hsize_t> dims(static_cast<std::size_t>(std::max(rank, 0)));
    if (!dims.empty())
        space.getSimpleExtentDims(dims.data());
    return dims;
}

} // namespace Tessaly
