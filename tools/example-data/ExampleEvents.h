#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace Tessaly::ExampleData {

// What a synthetic measurement looks like: instrument settings and the cell populations drawn.
struct ExampleSettings
{
    std::size_t eventCount = 5000;
    std::uint64_t seed = 1;
    double channelWidth = 20.0; // µm
    double flowRate = 0.06; // µL/s
    double pixelSize = 0.34; // µm per pixel
    double temperature = 23.0; // °C
    double frameRate = 3000.0; // frames per second
    double traceSampleRate = 1e6; // Hz
    int frameWidth = 250; // pixels along the channel
    int frameHeight = 80; // pixels across the channel
    int traceLength = 160; // samples per event and channel
    double deformScale = 1.0; // > 1 makes the cells softer (more deformed)
    double fluorescentFraction = 0.3; // share of cells positive in FL-1
    std::string sample = "Example sample";
};

// Geometry and intensity of one drawn cell, kept so that image, mask, trace and the scalar features
// describe the same cell.
struct CellShape
{
    double centreX = 0; // µm from the left frame edge
    double centreY = 0; // µm from the channel axis
    double semiAxisX = 0; // µm, along the flow
    double semiAxisY = 0; // µm, across the flow
    double brightness = 0; // grey value of the cell body
    double flPeak[3] = { 0, 0, 0 }; // fluorescence peak heights per channel, a.u.
    double flPosition[3] = { 0, 0, 0 }; // peak positions, µs
    double flWidth[3] = { 0, 0, 0 }; // full width at half maximum, µs
};

// All events of an example measurement: the shapes and the scalar columns computed from them.
struct ExampleEvents
{
    std::vector<CellShape> cells;
    std::map<std::string, std::vector<double>> columns;
};

// Draws the cells and derives a consistent set of scalar features from their shapes.
ExampleEvents generateEvents(const ExampleSettings& settings);

// Perimeter of an ellipse with semi-axes a and b (Ramanujan's second approximation).
double ellipsePerimeter(double a, double b);

} // namespace Tessaly::ExampleData
