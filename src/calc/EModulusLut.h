#pragma once

#include <QString>
#include <vector>

namespace Tessaly {

// A Young's modulus look-up table as read from its file: rows of area (µm²), deformation and modulus
// (kPa) computed for one channel width, flow rate and viscosity.
struct EModulusLut
{
    std::vector<double> area;
    std::vector<double> deform;
    std::vector<double> emodulus;
    double channelWidth = 20.0; // µm
    double flowRate = 0.16; // µL/s
    double viscosity = 1.002; // mPa·s

    QString filePath; // where it was read from
    QString metadataText; // the metadata block, without its comment marks
};

// What reading a table file noticed beyond what it keeps. The program reads leniently (a line that
// isn't a row is dropped), but a table the user hands in is checked strictly.
struct EModulusLutDiagnostics
{
    bool headerSeen = false;
    bool metadataBlock = false; // a block was closed
    bool metadataValid = true; // every closed block was a JSON object
    int rejectedLine = 0; // first line (from 1) that looked like a row but isn't one; 0 for none
    QString rejectedText;
};

// Reads a table file. Comment lines start with "#"; a block between lines holding "BEGIN METADATA"
// and "END METADATA" is a JSON object whose "channel_width", "flow_rate" and "fluid_viscosity"
// replace the defaults; the first other line naming "area" or "deform" is the header; every further
// line whose first three fields are numbers is a row. False when the file can't be read as text.
bool readEModulusLut(const QString& path, EModulusLut& lut, EModulusLutDiagnostics* diagnostics = nullptr);

} // namespace Tessaly
