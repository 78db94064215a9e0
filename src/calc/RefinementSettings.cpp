#include "calc/RefinementSettings.h"

#include "core/MetadataNumber.h"

#include <algorithm>
#include <charconv>
#include <optional>

namespace Tessaly {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// `text` as a channel number when it is all digits and fits an int.
std::optional<int> parseChannel(const char* first, const char* last)
{
    if (first == last || !std::all_of(first, last, isDigit))
        return std::nullopt;
    int value = 0;
    const auto [end, error] = std::from_chars(first, last, value);
    if (error != std::errc() || end != last)
        return std::nullopt;
    return value;
}

bool startsWith(const std::string& text, const char* prefix)
{
    return text.rfind(prefix, 0) == 0;
}

// The channel of an offset key, from the digits that follow its 9-character prefix.
std::optional<int> offsetChannel(const std::string& key)
{
    const bool blanks = startsWith(key, "baseline ") && key.find(" offset") != std::string::npos;
    const bool underscores = startsWith(key, "baseline_") && key.find("_offset") != std::string::npos;
    if (!blanks && !underscores)
        return std::nullopt;
    const char* first = key.data() + 9;
    const char* last = std::find_if_not(first, key.data() + key.size(), isDigit);
    return parseChannel(first, last);
}

} // namespace

FluorescenceSampling readFluorescenceSampling(const std::map<std::string, std::string>& fluorescence)
{
    FluorescenceSampling sampling;
    double rate = 0.0;
    for (const auto& [key, value] : fluorescence) {
        if (key == "sample rate" || key == "sample_rate") {
            if (const auto number = parseMetadataNumber(value))
                rate = *number;
        } else if (const auto channel = offsetChannel(key)) {
            if (const auto number = parseMetadataNumber(value))
                sampling.offsets[*channel] = *number;
        }
    }
    // Without a usable rate the positions stay in samples, scaled by 1e6 µs.
    sampling.sampleRate = rate > 0.0 ? rate : 1.0;
    sampling.sampleTime = 1e6 / sampling.sampleRate;
    return sampling;
}

double readPixelSize(const std::map<std::string, std::string>& imaging)
{
    for (const char* key : { "pixel size", "pixel_size" }) {
        const auto found = imaging.find(key);
        if (found == imaging.end())
            continue;
        if (const auto size = parseMetadataNumber(found->second))
            return *size;
    }
    return 0.0;
}

std::vector<int> refinementChannels(const std::vector<std::string>& featureNames)
{
    std::vector<int> channels;
    for (const std::string& name : featureNames) {
        if (name.size() < 6 || !startsWith(name, "fl") || name.compare(name.size() - 4, 4, "_max") != 0
            || name.find("_max_") != std::string::npos)
            continue;
        if (const auto channel = parseChannel(name.data() + 2, name.data() + name.size() - 4))
            channels.push_back(*channel);
    }
    std::sort(channels.begin(), channels.end());
    channels.erase(std::unique(channels.begin(), channels.end()), channels.end());
    return channels;
}

std::string channelFeature(int channel, const char* suffix)
{
    return "fl" + std::to_string(channel) + suffix;
}

std::string rawTraceName(int channel)
{
    return channelFeature(channel, "_raw");
}

} // namespace Tessaly
