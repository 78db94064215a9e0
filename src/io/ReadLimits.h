#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace Tessaly {

// Bounds on what a measurement file may make the reader allocate. The sizes that a file declares are
// checked before any buffer is made, so that a file which claims more than can be held gives a
// neutral result instead of exhausting the machine.

// Frames wider or taller than this are refused; the camera's are a few hundred pixels.
constexpr std::uint64_t maxFrameSide = 16384;

// The most memory one read may ask for: the machine's physical memory (sysconf), or 4 GiB where
// the system doesn't tell. A value set by setReadMemoryLimit takes its place.
std::uint64_t readMemoryLimit();
// Lowers or raises the limit for the whole process; 0 goes back to the physical memory.
void setReadMemoryLimit(std::uint64_t bytes);

// count x size, or the largest value where the product doesn't fit.
std::uint64_t saturatingProduct(std::uint64_t count, std::uint64_t size);

// Empty when `bytes` fit within readMemoryLimit(), else the reason for the refusal as one sentence
// that names `what`, e.g. "12000000000 values need 96000000000 bytes, more than the limit of ...".
std::optional<std::string> memoryRefusal(const std::string& what, std::uint64_t bytes);

} // namespace Tessaly
