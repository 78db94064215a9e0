#include "io/ReadLimits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

using namespace Tessaly;
using testing::HasSubstr;

TEST(ReadLimits, AvailableMemoryComesFromTheMemAvailableLine)
{
    struct Case
    {
        const char* text;
        std::optional<std::uint64_t> bytes;
    };
    const Case cases[] = {
        { "MemTotal:       24576000 kB\nMemFree:         1000 kB\nMemAvailable:   16000000 kB\n",
            std::uint64_t { 16000000 } * 1024 },
        // Free memory is not what can be given: only the MemAvailable line counts.
        { "MemTotal:       24576000 kB\nMemFree:         1000 kB\n", std::nullopt },
        { "MemAvailable: 4096\n", 4096 },
        { "MemAvailable:   12 MB\n", std::nullopt },
        { "MemAvailable:   lots kB\n", std::nullopt },
        { "", std::nullopt },
        { "MemAvailable: 18446744073709551615 kB\n", std::numeric_limits<std::uint64_t>::max() },
    };
    for (const Case& c : cases)
        EXPECT_EQ(parseAvailableMemory(c.text), c.bytes) << c.text;
}

TEST(ReadLimits, WithoutASetLimitHalfTheAvailableMemoryIsAllowed)
{
    setReadMemoryLimit(0);
    const std::uint64_t available = availableMemory();
    ASSERT_GT(available, std::uint64_t { 1 } << 20);
    EXPECT_FALSE(memoryRefusal("a small column", 1024).has_value());
    const std::optional<std::string> refusal = memoryRefusal("the whole memory", available);
    ASSERT_TRUE(refusal.has_value());
    EXPECT_THAT(*refusal, testing::StartsWith("the whole memory would need "));
    EXPECT_THAT(*refusal, HasSubstr(" bytes, more than half of the "));
    EXPECT_THAT(*refusal, HasSubstr(" bytes of memory available now"));

    // A set limit is named as such, and is the bound whatever the machine has.
    setReadMemoryLimit(1000);
    EXPECT_FALSE(memoryRefusal("x", 1000).has_value());
    EXPECT_EQ(memoryRefusal("x", 1001),
        "x would need 1001 bytes, more than the 1000 bytes of memory allowed for one read");
    setReadMemoryLimit(0);
}
