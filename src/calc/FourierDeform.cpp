#include "calc/FourierDeform.h"

#include "calc/FourierOutline.h"
#include "io/VQDReader.h"

#include <QtConcurrent/QtConcurrentMap>
#include <algorithm>
#include <cmath>
#include <iostream>
#include <numeric>

namespace Tessaly {

namespace {

constexpr double pi = 3.141592653589793;
// Events per progress step, read at once and shared out over the thread pool.
constexpr std::size_t progressStep = 100;

std::vector<int> orders(int first, int harmonics, int step)
{
    std::vector<int> result;
    for (int k = first; k < harmonics; k += step)
        result.push_back(k);
    return result;
}

FourierResult analyze(const std::vector<cv::Point>& points, int harmonics, bool resample)
{
    std::vector<double> angles;
    std::vector<double> radii;
    std::vector<double> weights;
    if (resample) {
        const std::vector<PolarPoint> sorted = polarHull(points, FourierDeform::hullSubdivisions);
        radii = resampleRadius(sorted, FourierDeform::gridPoints);
        angles.resize(radii.size());
        for (std::size_t j = 0; j < angles.size(); ++j)
            angles[j] = static_cast<double>(j) * 2.0 * pi / FourierDeform::gridPoints;
        weights.assign(radii.size(), 2.0 * pi / FourierDeform::gridPoints);
    } else {
        for (const PolarPoint& p : polarHull(points, 50)) {
            angles.push_back(p.theta);
            radii.push_back(p.r);
        }
        weights = angularGapWeights(angles);
    }

    // At least order 1, whose cos θ and sin θ the rebuilt outlines need; orders beyond `harmonics` are
    // never selected.
    const HarmonicTable table = harmonicTable(angles, std::max(harmonics, 2));
    const FourierCoefficients coefficients = fourierCoefficients(radii, weights, table);
    const auto deformation = [&](const std::vector<int>& selected) {
        return polygonDeformation(
            table.cosines[1], table.sines[1], rebuildRadius(coefficients, table, selected));
    };
    FourierResult result;
    result.deformOdd = deformation(orders(1, harmonics, 2));
    result.deformEven = deformation(orders(2, harmonics, 2));
    result.deformFc = deformation(orders(1, harmonics, 1));
    return result;
}

// The three features of one event from its mask, left at NaN when the mask has no usable outline.
void analyzeMask(
    const std::vector<std::uint8_t>& mask, int width, int height, double& odd, double& even, double& fc)
{
    try {
        std::vector<cv::Point> outline;
        if (mask.empty() || !largestOutline(mask, width, height, outline))
            return;
        const FourierResult result
            = FourierDeform::analyzeContour(outline, FourierDeform::harmonicCount, true);
        // The odd and even parts describe one shape together: both or neither.
        if (std::isfinite(result.deformOdd) && std::isfinite(result.deformEven)) {
            odd = result.deformOdd;
            even = result.deformEven;
        }
        if (std::isfinite(result.deformFc))
            fc = result.deformFc;
    } catch (...) {
        // One bad event never stops the others; it keeps its NaN.
    }
}

} // namespace

FourierDeform::FourierDeform(QObject* parent)
    : QObject(parent)
{
}

FourierResult FourierDeform::analyzeContour(
    const std::vector<cv::Point>& points, int harmonics, bool resample)
{
    try {
        return analyze(points, harmonics, resample);
    } catch (const std::exception& e) {
        std::cerr << (std::string("[FCA] ") + e.what() + '\n') << std::flush;
    } catch (...) {
    }
    return {};
}

bool FourierDeform::compute(VQDReader* reader)
{
    if (!reader || !reader->hasMask())
        return false;
    const auto events = static_cast<std::size_t>(reader->eventCount());
    const double nan = std::numeric_limits<double>::quiet_NaN();
    std::vector<double> odd(events, nan);
    std::vector<double> even(events, nan);
    std::vector<double> fc(events, nan);

    // Events are independent. Each block of 100 masks is read at once, then analysed on all cores; only
    // one block of masks is held at a time.
    std::vector<std::size_t> block;
    for (std::size_t begin = 0; begin < events; begin += progressStep) {
        emit progressChanged(
            static_cast<int>(static_cast<double>(begin) * 100.0 / static_cast<double>(events)));
        int width = 0;
        int height = 0;
        const std::vector<std::vector<std::uint8_t>> masks
            = reader->getMasks(begin, std::min(progressStep, events - begin), &width, &height);
        block.resize(masks.size());
        std::iota(block.begin(), block.end(), std::size_t { 0 });
        QtConcurrent::blockingMap(block, [&](std::size_t k) {
            const std::size_t i = begin + k;
            analyzeMask(masks[k], width, height, odd[i], even[i], fc[i]);
        });
    }

    reader->setFeature("deform_odd", std::move(odd));
    reader->setFeature("deform_even", std::move(even));
    reader->setFeature("deform_fc", std::move(fc));
    emit progressChanged(100);
    return true;
}

} // namespace Tessaly
