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

// Root attributes read from an object header; past that they are left unread. An instrument writes a
// few hundred, and reading n of them from a header costs n squared.
constexpr std::uint64_t maxHeaderAttributes = 4096;

// The most memory one read may ask for: half of what the machine can give now (its available memory,
// not its physical memory, since other programs hold the rest), asked afresh at every call. A value
// set by setReadMemoryLimit takes its place.
std::uint64_t readMemoryLimit();
// Sets a fixed limit for the whole process; 0 goes back to half the available memory.
void setReadMemoryLimit(std::uint64_t bytes);

// The memory the system could give now, in bytes: "MemAvailable" of /proc/meminfo where there is one,
// else the free pages that sysconf tells, else 8 GiB.
std::uint64_t availableMemory();
// The "MemAvailable" line of a text in the form of /proc/meminfo, in bytes; nothing when it has none.
std::optional<std::uint64_t> parseAvailableMemory(const std::string& meminfo);

// count x size, or the largest value where the product doesn't fit.
std::uint64_t saturatingProduct(std::uint64_t count, std::uint64_t size);

// Empty when `bytes` fit within readMemoryLimit(), else the reason for the refusal as one sentence
// that names `what` and the limit that refused it, e.g. "12000000000 values would need 96000000000
// bytes, more than half of the 16000000000 bytes of memory available now".
std::optional<std::string> memoryRefusal(const std::string& what, std::uint64_t bytes);

} // namespace Tessaly
