#include "core/FluorescenceChannels.h"

#include "core/MetadataNumber.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <optional>

namespace Tessaly {

namespace {

// One colour channel of wavelengthColor: the intensity c in 0..1, dimmed by f and gamma corrected.
int gammaCorrected(double c, double f)
{
    if (c <= 0.0)
        return 0;
    return std::min(static_cast<int>(255.0 * std::pow(f * c, 0.8)), 255);
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// The channel number in `key` when the key is exactly `prefix`, one or more digits and `suffix`.
std::optional<int> keyChannel(const std::string& key, const std::string& prefix, const std::string& suffix)
{
    if (key.size() <= prefix.size() + suffix.size() || key.compare(0, prefix.size(), prefix) != 0
        || key.compare(key.size() - suffix.size(), suffix.size(), suffix) != 0)
        return std::nullopt;
    const char* first = key.data() + prefix.size();
    const char* last = key.data() + key.size() - suffix.size();
    if (!std::all_of(first, last, isDigit))
        return std::nullopt;
    int channel = 0;
    const auto [end, error] = std::from_chars(first, last, channel);
    if (error != std::errc() || end != last)
        return std::nullopt;
    return channel;
}

} // namespace

RgbColor wavelengthColor(double wavelength)
{
    const double w = wavelength;
    if (!(w >= 380.0 && w <= 780.0))
        return { 128, 128, 128 };

    double r = 0.0;
    double g = 0.0;
    double b = 0.0;
    if (w < 440.0) {
        r = (440.0 - w) / 60.0;
        b = 1.0;
    } else if (w < 490.0) {
        g = (w - 440.0) / 50.0;
        b = 1.0;
    } else if (w < 510.0) {
        g = 1.0;
        b = (510.0 - w) / 20.0;
    } else if (w < 580.0) {
        r = (w - 510.0) / 70.0;
        g = 1.0;
    } else if (w < 645.0) {
        r = 1.0;
        g = (645.0 - w) / 65.0;
    } else {
        r = 1.0;
    }

    double f = 1.0;
    if (w < 420.0)
        f = 0.3 + 0.7 * (w - 380.0) / 40.0;
    else if (w > 700.0)
        f = 0.3 + 0.7 * (780.0 - w) / 80.0;

    return { gammaCorrected(r, f), gammaCorrected(g, f), gammaCorrected(b, f) };
}

int parseWavelength(const std::string& channelText)
{
    const std::string::size_type slash = channelText.find('/');
    const std::string part = channelText.substr(0, slash);

    const auto lastDigit = std::find_if(part.rbegin(), part.rend(), isDigit);
    if (lastDigit == part.rend())
        return 0;
    const auto firstDigit = std::find_if_not(lastDigit, part.rend(), isDigit);

    // Far beyond any wavelength; the cap only keeps a long digit run from overflowing.
    long long value = 0;
    for (auto it = firstDigit.base(); it != lastDigit.base(); ++it)
        value = std::min(value * 10 + (*it - '0'), static_cast<long long>(INT_MAX));
    return static_cast<int>(value);
}

std::string medianTraceName(int channel)
{
    return "fl" + std::to_string(channel) + "_median";
}

std::string refinedTraceName(int channel)
{
    return medianTraceName(channel) + "_rf";
}

ChannelTrace chooseChannelTrace(int channel, const std::vector<std::string>& traceNames, bool preferRefined)
{
    const std::string refined = refinedTraceName(channel);
    if (preferRefined && std::find(traceNames.begin(), traceNames.end(), refined) != traceNames.end())
        return { refined, true };
    return { medianTraceName(channel), false };
}

FluorescenceChannelSettings readFluorescenceChannelSettings(
    const std::map<std::string, std::string>& fluorescence)
{
    FluorescenceChannelSettings settings;
    bool blankSampleRate = false;
    for (const auto& [key, value] : fluorescence) {
        if (const auto n = keyChannel(key, "channel ", " name")) {
            settings.channelNames[*n] = value;
        } else if (const auto n = keyChannel(key, "channel_", "_name")) {
            settings.channelNames.emplace(*n, value);
        } else if (const auto n = keyChannel(key, "baseline ", " offset")) {
            if (const auto offset = parseMetadataNumber(value))
                settings.offsets[*n] = *offset;
        } else if (const auto n = keyChannel(key, "baseline_", "_offset")) {
            if (const auto offset = parseMetadataNumber(value))
                settings.offsets.emplace(*n, *offset);
        } else if (key == "sample rate") {
            settings.sampleRate = parseMetadataNumber(value).value_or(0.0);
            blankSampleRate = true;
        } else if (key == "sample_rate" && !blankSampleRate) {
            settings.sampleRate = parseMetadataNumber(value).value_or(0.0);
        }
    }
    return settings;
}

} // namespace Tessaly
