#pragma once

#include <string>
#include <utility>
#include <vector>

namespace Tessaly {

// A vertex or contour point in data units: (x, y).
using PlanePoint = std::pair<double, double>;

enum FilterRuleType : int {
    RangeRule = 0,
    PolygonRule = 1,
};

// One gate on the events of a dataset: a closed range on one feature, or a polygon on two.
struct FilterRule
{
    int type = RangeRule;
    std::string featureName; // the feature of a range, the x feature of a polygon
    std::string featureNameY; // the y feature of a polygon
    double minValue = 0.0;
    double maxValue = 0.0;
    // Not closed: the last vertex is no copy of the first.
    std::vector<PlanePoint> polygonVertices;
    // Scale modes of the axes on which the polygon was drawn; its edges are straight there.
    int scaleXMode = 0;
    int scaleYMode = 0;
    bool enabled = true;
    bool inverted = false;
    // Links the copies of one rule across datasets.
    std::string propagationId;
};

} // namespace Tessaly
