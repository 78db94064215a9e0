#include "io/ReadLimits.h"

#include <atomic>
#include <limits>
#include <unistd.h>

namespace Tessaly {

namespace {

constexpr std::uint64_t fallbackLimit = std::uint64_t { 4 } << 30;

std::atomic<std::uint64_t>& configuredLimit()
{
    static std::atomic<std::uint64_t> limit { 0 };
    return limit;
}

std::uint64_t physicalMemory()
{
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    if (pages <= 0 || pageSize <= 0)
        return fallbackLimit;
    return saturatingProduct(static_cast<std::uint64_t>(pages), static_cast<std::uint64_t>(pageSize));
}

} // namespace

std::uint64_t readMemoryLimit()
{
    const std::uint64_t configured = configuredLimit().load(std::memory_order_relaxed);
    if (configured > 0)
        return configured;
    static const std::uint64_t physical = physicalMemory();
    return physical;
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
    const std::uint64_t limit = readMemoryLimit();
    if (bytes <= limit)
        return std::nullopt;
    return what + " would need " + std::to_string(bytes) + " bytes, more than the " + std::to_string(limit)
        + " bytes of memory allowed for one read";
}

} // namespace Tessaly
