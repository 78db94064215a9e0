#include "calc/LookupTableCheck.h"

#include "calc/EModulusLut.h"

#include <algorithm>

namespace Tessaly {

QString lookupTableProblem(const QString& path)
{
    EModulusLut lut;
    EModulusLutDiagnostics diagnostics;
    if (!readEModulusLut(path, lut, &diagnostics))
        return LookupTableTexts::unreadable;
    if (!diagnostics.headerSeen)
        return LookupTableTexts::noHeader;
    if (diagnostics.rejectedLine > 0)
        return LookupTableTexts::badRow.arg(diagnostics.rejectedLine).arg(diagnostics.rejectedText);
    if (!diagnostics.metadataValid)
        return LookupTableTexts::badMetadata;
    if (lut.area.size() < 3)
        return LookupTableTexts::tooFewRows.arg(lut.area.size());
    const auto [areaLow, areaHigh] = std::minmax_element(lut.area.begin(), lut.area.end());
    const auto [deformLow, deformHigh] = std::minmax_element(lut.deform.begin(), lut.deform.end());
    if (!(*areaHigh > *areaLow) || !(*deformHigh > *deformLow))
        return LookupTableTexts::noExtent;
    return {};
}

} // namespace Tessaly
