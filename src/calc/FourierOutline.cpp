#include "calc/FourierOutline.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

namespace Tessaly {

namespace {

constexpr double pi = 3.141592653589793;
constexpr double twoPi = 2.0 * pi;

// An angle of atan2, in [-π, π], brought into [0, 2π) as fmod(fmod(θ, 2π) + 2π, 2π) would: the inner
// fmod leaves such an angle as it is, and the outer one takes 2π off the rounded sum exactly once
// when it reaches 2π (that subtraction is exact). Two branches instead of two divisions.
double wrapAngle(double theta)
{
    const double shifted = theta + twoPi;
    return shifted >= twoPi ? shifted - twoPi : shifted;
}

// Sorts stably by angle. The hull runs counter-clockwise around a centroid inside it, so its angles
// already rise along it, once round: when they do so strictly, the sorted order is the unique rotation
// of that sequence, found in one pass instead of a sort.
void sortByAngle(std::vector<PolarPoint>& polar)
{
    const std::size_t n = polar.size();
    std::size_t falls = 0;
    bool ties = false;
    std::size_t smallest = 0;
    for (std::size_t k = 0; k < n; ++k) {
        const double here = polar[k].theta;
        const double next = polar[(k + 1) % n].theta;
        falls += next < here;
        ties = ties || !(next != here);
        if (here < polar[smallest].theta)
            smallest = k;
    }
    if (n > 1 && falls == 1 && !ties) {
        std::rotate(polar.begin(), polar.begin() + static_cast<std::ptrdiff_t>(smallest), polar.end());
        return;
    }
    std::stable_sort(polar.begin(), polar.end(),
        [](const PolarPoint& a, const PolarPoint& b) { return a.theta < b.theta; });
}

} // namespace

bool largestOutline(
    const std::vector<std::uint8_t>& mask, int width, int height, std::vector<cv::Point>& outline)
{
    if (width < 1 || height < 1
        || mask.size() < static_cast<std::size_t>(width) * static_cast<std::size_t>(height))
        return false;
    // The matrix only wraps the bytes; the mask itself is the caller's copy.
    const cv::Mat image(height, width, CV_8UC1, const_cast<std::uint8_t*>(mask.data()));
    std::vector<std::vector<cv::Point>> contours;
    cv::findContours(image, contours, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_NONE);

    const std::vector<cv::Point>* best = nullptr;
    double bestArea = 0.0;
    for (const std::vector<cv::Point>& contour : contours) {
        if (contour.size() < 5)
            continue;
        const double area = cv::contourArea(contour);
        if (!best || area > bestArea) {
            best = &contour;
            bestArea = area;
        }
    }
    if (!best || !(bestArea > 0.0))
        return false;
    outline = *best;
    return true;
}

std::vector<PolarPoint> polarHull(const std::vector<cv::Point>& points, int subdivisions)
{
    std::vector<cv::Point> hull;
    cv::convexHull(points, hull);
    const cv::Moments m = cv::moments(hull);
    const double cx = m.m10 / m.m00;
    const double cy = m.m01 / m.m00;

    std::vector<PolarPoint> polar;
    polar.reserve(hull.size() * static_cast<std::size_t>(std::max(subdivisions, 1)));
    for (std::size_t k = 0; k < hull.size(); ++k) {
        const cv::Point& from = hull[k];
        const cv::Point& to = hull[(k + 1) % hull.size()];
        const double x0 = from.x - cx;
        const double y0 = from.y - cy;
        const double dx = to.x - from.x;
        const double dy = to.y - from.y;
        for (int s = 0; s < subdivisions; ++s) {
            const double t = static_cast<double>(s) / subdivisions;
            const double x = x0 + t * dx;
            const double y = y0 + t * dy;
            const double theta = wrapAngle(std::atan2(y, x));
            const double r = std::sqrt(x * x + y * y);
            // A hull without area has no centroid, and every point of it then lies nowhere.
            if (std::isnan(theta) || std::isnan(r))
                throw std::domain_error("the outline's hull has no centroid");
            polar.push_back({ theta, r });
        }
    }
    sortByAngle(polar);
    return polar;
}

std::vector<double> resampleRadius(const std::vector<PolarPoint>& sorted, int gridPoints)
{
    // The periodic extension: the last point once more before 0, the first once more after 2π.
    std::vector<PolarPoint> knots;
    knots.reserve(sorted.size() + 2);
    for (const PolarPoint& p : sorted)
        if (knots.empty() || p.theta != knots.back().theta)
            knots.push_back(p);
    if (knots.size() < 2)
        throw std::invalid_argument("the outline needs at least two distinct angles");
    const PolarPoint first = knots.front();
    const PolarPoint last = knots.back();
    knots.insert(knots.begin(), { last.theta - twoPi, last.r });
    knots.push_back({ first.theta + twoPi, first.r });

    std::vector<double> radii(static_cast<std::size_t>(std::max(gridPoints, 0)));
    std::size_t k = 0;
    for (int j = 0; j < gridPoints; ++j) {
        const double theta = j * twoPi / gridPoints;
        while (k + 2 < knots.size() && knots[k + 1].theta <= theta)
            ++k;
        const PolarPoint& a = knots[k];
        const PolarPoint& b = knots[k + 1];
        radii[static_cast<std::size_t>(j)] = a.r + (b.r - a.r) * (theta - a.theta) / (b.theta - a.theta);
    }
    return radii;
}

HarmonicTable harmonicTable(const std::vector<double>& angles, int harmonics)
{
    const std::size_t orders = static_cast<std::size_t>(std::max(harmonics, 1));
    HarmonicTable table;
    table.cosines.assign(orders, std::vector<double>(angles.size()));
    table.sines.assign(orders, std::vector<double>(angles.size()));
    for (std::size_t j = 0; j < angles.size(); ++j) {
        const double c = std::cos(angles[j]);
        const double s = std::sin(angles[j]);
        // Multiples of the angle by repeated rotation: exact to rounding, and far cheaper than a call
        // to cos and sin for each order.
        double ck = 1.0;
        double sk = 0.0;
        for (std::size_t k = 0; k < orders; ++k) {
            table.cosines[k][j] = ck;
            table.sines[k][j] = sk;
            const double next = ck * c - sk * s;
            sk = sk * c + ck * s;
            ck = next;
        }
    }
    return table;
}

FourierCoefficients fourierCoefficients(
    const std::vector<double>& r, const std::vector<double>& weights, const HarmonicTable& table)
{
    const std::size_t orders = table.cosines.size();
    FourierCoefficients coefficients { std::vector<double>(orders), std::vector<double>(orders) };
    for (std::size_t k = 0; k < orders; ++k) {
        double a = 0.0;
        double b = 0.0;
        for (std::size_t j = 0; j < r.size(); ++j) {
            a += r[j] * table.cosines[k][j] * weights[j];
            b += r[j] * table.sines[k][j] * weights[j];
        }
        coefficients.a[k] = a / pi;
        coefficients.b[k] = b / pi;
    }
    if (orders > 0)
        coefficients.a[0] *= 0.5;
    return coefficients;
}

std::vector<double> rebuildRadius(
    const FourierCoefficients& coefficients, const HarmonicTable& table, const std::vector<int>& orders)
{
    const std::size_t points = table.cosines.empty() ? 0 : table.cosines[0].size();
    std::vector<double> r(points, coefficients.a.empty() ? 0.0 : coefficients.a[0]);
    for (int order : orders) {
        const auto k = static_cast<std::size_t>(order);
        if (order < 1 || k >= coefficients.a.size())
            continue;
        for (std::size_t j = 0; j < points; ++j)
            r[j] += coefficients.a[k] * table.cosines[k][j] + coefficients.b[k] * table.sines[k][j];
    }
    return r;
}

std::vector<double> angularGapWeights(const std::vector<double>& sortedAngles)
{
    const std::size_t n = sortedAngles.size();
    std::vector<double> weights(n, 0.0);
    const auto gap
        = [](double from, double to) { return std::fmod(std::fmod(to - from, twoPi) + twoPi, twoPi); };
    for (std::size_t j = 0; j < n; ++j) {
        const double before = gap(sortedAngles[(j + n - 1) % n], sortedAngles[j]);
        const double after = gap(sortedAngles[j], sortedAngles[(j + 1) % n]);
        weights[j] = 0.5 * (before + after);
    }
    return weights;
}

double polygonDeformation(const std::vector<double>& angles, const std::vector<double>& radii)
{
    std::vector<double> cosines(angles.size());
    std::vector<double> sines(angles.size());
    for (std::size_t j = 0; j < angles.size(); ++j) {
        cosines[j] = std::cos(angles[j]);
        sines[j] = std::sin(angles[j]);
    }
    return polygonDeformation(cosines, sines, radii);
}

double polygonDeformation(
    const std::vector<double>& cosines, const std::vector<double>& sines, const std::vector<double>& radii)
{
    std::vector<cv::Point2f> polygon(radii.size());
    for (std::size_t j = 0; j < radii.size(); ++j)
        polygon[j] = { static_cast<float>(radii[j] * cosines[j]), static_cast<float>(radii[j] * sines[j]) };
    const double area = cv::contourArea(polygon);
    const double length = cv::arcLength(polygon, true);
    return 1.0 - 2.0 * std::sqrt(pi * area) / length;
}

} // namespace Tessaly
