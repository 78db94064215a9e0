#pragma once

#include <optional>
#include <string>

namespace Tessaly {

// A metadata value as a number, independent of the process locale: the whole text must be the
// number, blanks around it aside; anything else gives nothing.
std::optional<double> parseMetadataNumber(const std::string& text);

} // namespace Tessaly
