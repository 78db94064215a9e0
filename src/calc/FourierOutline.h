#pragma once

#include <cstdint>
#include <opencv2/core/types.hpp>
#include <vector>

namespace Tessaly {

// The steps of describing a cell's outline as a radius over angle and rebuilding it from chosen
// harmonics. Angles are in radians in [0, 2π), measured around the outline's centroid.

// The outline of the largest region of a mask (non-zero is inside): of the outer boundaries with at
// least 5 points, every boundary pixel kept, the one enclosing the largest area; the first found
// wins a tie. False when no boundary has 5 points or the largest encloses no area.
bool largestOutline(
    const std::vector<std::uint8_t>& mask, int width, int height, std::vector<cv::Point>& outline);

// A point of an outline in polar form around the centroid.
struct PolarPoint
{
    double theta = 0.0;
    double r = 0.0;
};

// The convex hull of `points`, moved so that the hull's centroid is the origin, with each edge
// divided into `subdivisions` equal steps (the edge's start point and the points between), in polar
// form, sorted stably by angle. Throws std::domain_error when the hull has no area to take a
// centroid of.
std::vector<PolarPoint> polarHull(const std::vector<cv::Point>& points, int subdivisions);

// The radius at `gridPoints` regular angles j 2π / gridPoints, interpolated linearly between the
// sorted points and periodically across 0 / 2π. Points at an angle already seen count once, the
// first of them. Throws std::invalid_argument with fewer than two distinct angles.
std::vector<double> resampleRadius(const std::vector<PolarPoint>& sorted, int gridPoints);

// cos(kθ) and sin(kθ) for k = 0..harmonics - 1 at each angle, as [k][j].
struct HarmonicTable
{
    std::vector<std::vector<double>> cosines;
    std::vector<std::vector<double>> sines;
};
HarmonicTable harmonicTable(const std::vector<double>& angles, int harmonics);

// Fourier coefficients of r over the given angles with quadrature weights w:
// a_k = (1/π) Σ r_j cos(kθ_j) w_j, b_k likewise with sin; a_0 is then halved so that it is the mean.
struct FourierCoefficients
{
    std::vector<double> a;
    std::vector<double> b;
};
FourierCoefficients fourierCoefficients(
    const std::vector<double>& r, const std::vector<double>& weights, const HarmonicTable& table);

// r(θ_j) = a_0 + Σ over `orders` of a_k cos(kθ_j) + b_k sin(kθ_j).
std::vector<double> rebuildRadius(
    const FourierCoefficients& coefficients, const HarmonicTable& table, const std::vector<int>& orders);

// Weights for unevenly spaced sorted angles: half the gaps to both neighbours, taken modulo 2π.
std::vector<double> angularGapWeights(const std::vector<double>& sortedAngles);

// 1 - 2 sqrt(π A) / L of the closed polygon through the points (r_j cos θ_j, r_j sin θ_j), rounded to
// 32-bit floats: 0 for a circle, growing as the outline departs from one.
double polygonDeformation(const std::vector<double>& angles, const std::vector<double>& radii);
// The same with cos θ_j and sin θ_j given, e.g. order 1 of a HarmonicTable.
double polygonDeformation(
    const std::vector<double>& cosines, const std::vector<double>& sines, const std::vector<double>& radii);

} // namespace Tessaly
