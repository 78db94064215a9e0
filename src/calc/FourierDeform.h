#pragma once

#include <QObject>
#include <limits>
#include <opencv2/core/types.hpp>
#include <vector>

namespace Tessaly {

class VQDReader;

// Deformations of one cell's outline rebuilt from its odd Fourier harmonics, its even ones, and all
// of them; NaN where there is none.
struct FourierResult
{
    double deformOdd = std::numeric_limits<double>::quiet_NaN();
    double deformEven = std::numeric_limits<double>::quiet_NaN();
    double deformFc = std::numeric_limits<double>::quiet_NaN();
};

// Describes each cell's outline, taken from its mask, as a radius over angle around its centroid,
// expands the radius into a Fourier series and rebuilds the outline from the odd harmonics (shape
// asymmetric front to back, as a cell pushed by the flow), from the even ones (a symmetric
// stretch) and from all. Their deformations become the features "deform_odd", "deform_even" and
// "deform_fc". Concavities don't count: the outline is the mask's convex hull.
//
// Holds nothing between calls. compute() reads masks through the reader's lock and spreads the
// events over the global thread pool.
class FourierDeform : public QObject
{
    Q_OBJECT

public:
    // Orders 0 to 10, edges divided into 10, a grid of 100 angles.
    static constexpr int harmonicCount = 11;
    static constexpr int hullSubdivisions = 10;
    static constexpr int gridPoints = 100;

    explicit FourierDeform(QObject* parent = nullptr);

    // Adds the three features, NaN for events without a usable mask. False without a reader or masks;
    // true otherwise, even if every value is NaN.
    bool compute(VQDReader* reader);

    // The three deformations of one outline from `harmonics` orders (0 to harmonics - 1). With
    // `resample` the radius is interpolated onto the regular grid of angles; without, the hull's
    // edges are divided into 50 and each point is weighted by the angles to its neighbours. Never
    // throws: a failure gives three NaN, with the reason on the standard error stream.
    static FourierResult analyzeContour(const std::vector<cv::Point>& points, int harmonics, bool resample);

signals:
    void progressChanged(int percent);
};

} // namespace Tessaly
