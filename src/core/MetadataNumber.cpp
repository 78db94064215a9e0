#include "core/MetadataNumber.h"

#include <charconv>

namespace Tessaly {

namespace {

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f' || c == '\v';
}

} // namespace

std::optional<double> parseMetadataNumber(const std::string& text)
{
    const char* first = text.data();
    const char* last = text.data() + text.size();
    while (first != last && isBlank(*first))
        ++first;
    while (last != first && isBlank(*(last - 1)))
        --last;
    double value = 0.0;
    const auto [end, error] = std::from_chars(first, last, value);
    if (first == last || error != std::errc() || end != last)
        return std::nullopt;
    return value;
}

} // namespace Tessaly
