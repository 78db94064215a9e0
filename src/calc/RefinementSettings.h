#pragma once

#include <map>
#include <string>
#include <vector>

namespace Tessaly {

// What a refinement takes from a file's "fluorescence" metadata: the sampling of the traces and each
// channel's baseline offset.
struct FluorescenceSampling
{
    double sampleRate = 1.0; // Hz; a missing or non-positive rate counts as 1
    double sampleTime = 1e6; // µs between two samples, 1e6 / sampleRate
    std::map<int, double> offsets; // channel number to baseline offset, a.u.
};

// Reads "sample rate" (or "sample_rate") and the offsets. A key that begins with "baseline " and
// contains " offset", or begins with "baseline_" and contains "_offset", is the offset of the channel
// whose number is the run of digits right after those 9 characters. Keys are read in ascending order
// and a later one overrides an earlier one of the same meaning; values that don't read as numbers are
// skipped.
FluorescenceSampling readFluorescenceSampling(const std::map<std::string, std::string>& fluorescence);

// The camera's pixel size in µm from the "imaging" section, "pixel size" or else "pixel_size"; 0 when
// absent or not a number.
double readPixelSize(const std::map<std::string, std::string>& imaging);

// The fluorescence channels of a dataset, ascending and each once: every feature "fl<digits>_max"
// gives the channel <digits>. Derived peak features such as "fl1_max_ctc" or "fl1_max_rf" contain
// "_max_" and don't count.
std::vector<int> refinementChannels(const std::vector<std::string>& featureNames);

// Feature and trace names of one channel.
std::string channelFeature(int channel, const char* suffix); // "fl<channel><suffix>"
std::string rawTraceName(int channel); // "fl<channel>_raw"

} // namespace Tessaly
