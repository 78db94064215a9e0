#pragma once

#include <map>
#include <string>
#include <vector>

namespace Tessaly {

// A colour as 8-bit red, green and blue.
struct RgbColor
{
    int r = 0;
    int g = 0;
    int b = 0;

    bool operator==(const RgbColor& other) const { return r == other.r && g == other.g && b == other.b; }
    bool operator!=(const RgbColor& other) const { return !(*this == other); }
};

// The colour of light of `wavelength` nanometres as the eye sees it: a piecewise linear rainbow from
// violet at 380 to red at 780, dimmed towards both ends, where the eye is less sensitive, and gamma
// corrected with 0.8. Anything outside 380..780 is mid gray (128, 128, 128).
RgbColor wavelengthColor(double wavelength);

// The wavelength in a fluorescence channel's text: the last whole number before the first "/" (in
// "FL1 525/50" the centre of the band-pass filter, 525), or in the whole text if there is no "/"
// ("FL1 488 nm" gives 488). 0 when that part holds no digits.
int parseWavelength(const std::string& channelText);

// Trace names of a fluorescence channel: the median trace stored by the instrument, "fl<n>_median",
// and its refined counterpart, "fl<n>_median_rf", which the refinement adds.
std::string medianTraceName(int channel);
std::string refinedTraceName(int channel);

// The trace that shows a channel: the refined trace when it is preferred and the dataset has it,
// the median trace otherwise.
struct ChannelTrace
{
    std::string traceName;
    bool refined = false;
};
ChannelTrace chooseChannelTrace(int channel, const std::vector<std::string>& traceNames, bool preferRefined);

// The channel settings in the "fluorescence" section of a file's metadata, each key in either of two
// spellings: "channel <n> name" or "channel_<n>_name", "baseline <n> offset" or
// "baseline_<n>_offset", "sample rate" or "sample_rate". Where both spellings are present the one
// with blanks wins. Offsets that do not read as numbers are left out; a sample rate that does not
// is 0.
struct FluorescenceChannelSettings
{
    std::map<int, std::string> channelNames; // channel number to its text
    std::map<int, double> offsets; // channel number to the baseline offset, in a.u.
    double sampleRate = 0.0; // Hz
};
FluorescenceChannelSettings readFluorescenceChannelSettings(
    const std::map<std::string, std::string>& fluorescence);

} // namespace Tessaly
