#include "io/ReadLimits.h"

#include <atomic>
#include <cctype>
#include <fstream>
#include <limits>
#include <sstream>
#include <unistd.h>

namespace Tessaly {

namespace {

constexpr std::uint64_t fallbackMemory = std::uint64_t { 8 } << 30;

std::atomic<std::uint64_t>& configuredLimit()
{
    static std::atomic<std::uint64_t> limit { 0 };
    return limit;
}

std::uint64_t freePages()
{
    const long pages = sysconf(_SC_AVPHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    if (pages <= 0 || pageSize <= 0)
        return fallbackMemory;
    return saturatingProduct(static_cast<std::uint64_t>(pages), static_cast<std::uint64_t>(pageSize));
}

} // namespace

std::optional<std::uint64_t> parseAvailableMemory(const std::string& meminfo)
{
    static const std::string key = "MemAvailable:";
    std::istringstream lines(meminfo);
    std::string line;
    while (std::getline(lines, line)) {
        if (line.compare(0, key.size(), key) != 0)
            continue;
        std::istringstream fields(line.substr(key.size()));
        std::uint64_t amount = 0;
        std::string unit;
        if (!(fields >> amount))
            return std::nullopt;
        fields >> unit;
        // The kernel writes "kB" and means KiB; a bare number is bytes.
        if (unit.empty())
            return amount;
        if (unit == "kB")
            return saturatingProduct(amount, 1024);
        return std::nullopt;
    }
    return std::nullopt;
}

std::uint64_t availableMemory()
{
    std::ifstream file("/proc/meminfo");
    if (file) {
        std::ostringstream text;
        text << file.rdbuf();
        if (const std::optional<std::uint64_t> available = parseAvailableMemory(text.str()))
            return *available;
    }
    return freePages();
}

std::uint64_t readMemoryLimit()
{
    const std::uint64_t configured = configuredLimit().load(std::memory_order_relaxed);
    if (configured > 0)
        return configured;
    return availableMemory() / 2;
}

void setReadMemoryLimit(std::uint64_t bytes)
{
    configuredLimit().store(bytes, std::memory_order_relaxed);
}

std::uint64_t saturatingProduct(std::uint64_t count, std::uint64_t size)
{
    if (size != 0 && count > std::numeric_limits<std::uint64_t>::max() / size)
        return std::numeric_limits<std::uint64_t>::max();
    return count * size;
}

std::optional<std::string> memoryRefusal(const std::string& what, std::uint64_t bytes)
{
    const std::uint64_t configured = configuredLimit().load(std::memory_order_relaxed);
    if (configured > 0) {
        if (bytes <= configured)
            return std::nullopt;
        return what + " would need " + std::to_string(bytes) + " bytes, more than the "
            + std::to_string(configured) + " bytes of memory allowed for one read";
    }
    // Cheap against the cost of any read it guards; asked afresh, since other programs come and go.
    const std::uint64_t available = availableMemory();
    if (bytes <= available / 2)
        return std::nullopt;
    return what + " would need " + std::to_string(bytes) + " bytes, more than half of the "
        + std::to_string(available) + " bytes of memory available now";
}

} // namespace Tessaly
