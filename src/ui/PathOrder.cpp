#include "ui/PathOrder.h"

#include <algorithm>

namespace Tessaly {

bool pathLessThan(const QString& a, const QString& b)
{
    const QStringList partsA = a.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    const QStringList partsB = b.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    const int common = std::min(partsA.size(), partsB.size());
    for (int i = 0; i < common; ++i) {
        const int order = QString::compare(partsA[i], partsB[i], Qt::CaseInsensitive);
        if (order != 0)
            return order < 0;
    }
    return partsA.size() < partsB.size();
}

void sortPaths(QStringList& paths)
{
    std::stable_sort(paths.begin(), paths.end(), pathLessThan);
}

} // namespace Tessaly
