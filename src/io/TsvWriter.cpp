#include "io/TsvWriter.h"

#include "io/VQDReader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <deque>
#include <exception>
#include <future>
#include <iostream>
#include <thread>

namespace Tessaly {

namespace {

// Rows are formatted in blocks on worker threads while the calling thread writes finished blocks
// in order, so formatting and writing overlap. A block holds at most this many rows, and fewer for
// wide tables so that its text stays near blockBytes.
constexpr std::size_t rowsPerBlock = 16384;
constexpr std::size_t blockBytes = 16 << 20;

// The longest cell, "-4.9406564584124654e-324", and its tab.
constexpr std::size_t maxCellBytes = 25;
// Room beyond the last cell that a value's writing may use, though the value is shorter.
constexpr std::size_t cellSlack = 40;

constexpr std::uint64_t pow10Table[] = { 1ULL, 10ULL, 100ULL, 1000ULL, 10000ULL, 100000ULL, 1000000ULL,
    10000000ULL, 100000000ULL, 1000000000ULL, 10000000000ULL, 100000000000ULL, 1000000000000ULL,
    10000000000000ULL, 100000000000000ULL, 1000000000000000ULL, 10000000000000000ULL, 100000000000000000ULL,
    1000000000000000000ULL, 10000000000000000000ULL };

// 10^-4 ... 10^15 as the nearest doubles; used only to guess the decimal exponent, which the digits
// then confirm.
constexpr double pow10Doubles[] = { 1e-4, 1e-3, 1e-2, 1e-1, 1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9,
    1e10, 1e11, 1e12, 1e13, 1e14, 1e15 };

struct DigitPairs
{
    char text[200];
    constexpr DigitPairs()
        : text {}
    {
        for (int i = 0; i < 100; ++i) {
            text[2 * i] = static_cast<char>('0' + i / 10);
            text[2 * i + 1] = static_cast<char>('0' + i % 10);
        }
    }
};
constexpr DigitPairs digitPairs;

unsigned __int128 pow10Wide(int k)
{
    return k <= 19 ? pow10Table[k] : static_cast<unsigned __int128>(pow10Table[k - 19]) * pow10Table[19];
}

// The 17 significant digits of a positive `value` = mantissa * 2^exponent (exponent < 0), correctly
// rounded (ties to even), for the decimal exponent `e`: round(value * 10^(16 - e)). Exact in 128-bit
// integers while 16 - e stays at most 22.
std::uint64_t digitsAt(std::uint64_t mantissa, int exponent, int e)
{
    const unsigned __int128 product = mantissa * pow10Wide(16 - e);
    const int shift = -exponent;
    std::uint64_t digits = static_cast<std::uint64_t>(product >> shift);
    const unsigned __int128 remainder = product & ((static_cast<unsigned __int128>(1) << shift) - 1);
    const unsigned __int128 half = static_cast<unsigned __int128>(1) << (shift - 1);
    if (remainder > half || (remainder == half && (digits & 1) != 0))
        ++digits;
    return digits;
}

// Four digits of 0 <= group < 10^4 at `text`.
inline void fourDigits(char* text, std::uint32_t group)
{
    std::memcpy(text, digitPairs.text + 2 * (group / 100), 2);
    std::memcpy(text + 2, digitPairs.text + 2 * (group % 100), 2);
}

// Writes the 17 digits of 10^16 <= digits < 10^17 to text[0..16]. The number is split into a leading
// digit and four groups of four in 32-bit arithmetic, whose divisions do not wait on each other, as a
// chain of divisions of the whole number by 100 would.
void seventeenDigits(char* text, std::uint64_t digits)
{
    const auto high = static_cast<std::uint32_t>(digits / 100000000); // the first nine digits
    const auto low = static_cast<std::uint32_t>(digits % 100000000);
    text[0] = static_cast<char>('0' + high / 100000000);
    const std::uint32_t highRest = high % 100000000;
    fourDigits(text + 1, highRest / 10000);
    fourDigits(text + 5, highRest % 10000);
    fourDigits(text + 9, low / 10000);
    fourDigits(text + 13, low % 10000);
}

// "%.17g" of a positive finite value between 10^-4 and 10^15, where it prints in fixed notation;
// nullptr outside, for the general conversion to take over. The common case of measured values, done
// in integers, is several times faster than the general conversion.
char* fixedSeventeen(char* out, double value)
{
    if (!(value >= 1e-4 && value < 1e15))
        return nullptr;
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    const int biased = static_cast<int>(bits >> 52);
    const std::uint64_t mantissa = (bits & ((1ULL << 52) - 1)) | (1ULL << 52);
    const int exponent = biased - 1075;
    if (exponent >= 0)
        return nullptr; // whole numbers, printed elsewhere
    // floor(log10(2^k)) for the binary exponent k is the decimal exponent or one too low; the nearest
    // double of the next power of ten settles most cases, and the digits, out of range when the guess
    // was still wrong or rounding carried up to 10^17, correct the rest.
    int e = ((biased - 1023) * 78913) >> 18;
    if (e < 15 && value >= pow10Doubles[e + 5])
        ++e;
    std::uint64_t digits = digitsAt(mantissa, exponent, e);
    if (digits >= pow10Table[17])
        digits = digitsAt(mantissa, exponent, ++e);
    else if (digits < pow10Table[16])
        digits = digitsAt(mantissa, exponent, --e);
    if (e < -4 || e > 14 || digits < pow10Table[16] || digits >= pow10Table[17])
        return nullptr;

    // Copies have fixed lengths, which compile to a few moves, and may run past the cell's end into
    // the room every buffer keeps (cellSlack); only the counted characters are kept.
    char text[32] = {};
    seventeenDigits(text, digits);
    int last = 16; // trailing zeros go, as "%g" drops them
    while (last > 0 && text[last] == '0')
        --last;
    if (e >= 0) {
        std::memcpy(out, text, 16);
        out[e + 1] = '.';
        std::memcpy(out + e + 2, text + e + 1, 16);
        out += last > e ? last + 2 : e + 1;
    } else {
        std::memcpy(out, "0.000", 5);
        std::memcpy(out + 1 - e, text, 17);
        out += 1 - e + last + 1;
    }
    return out;
}

// Writes the value as "%.17g" would print it to `out`, which has room for a cell, and returns the
// end. Whole numbers below 10^15 in magnitude print as their digits alone, and values in fixed
// notation go through integers; both save most of the time of the general conversion.
inline char* putValue(char* out, double value)
{
    char* const end = out + maxCellBytes;
    if (value == std::trunc(value) && std::fabs(value) < 1e15 && value != 0.0)
        return std::to_chars(out, end, static_cast<long long>(value)).ptr;
    if (value < 0.0) {
        *out = '-';
        if (char* fixed = fixedSeventeen(out + 1, -value))
            return fixed;
    } else if (char* fixed = fixedSeventeen(out, value)) {
        return fixed;
    }
    return std::to_chars(out, end, value, std::chars_format::general, 17).ptr;
}

std::string localDate()
{
    const std::time_t now = std::time(nullptr);
    std::tm local {};
    localtime_r(&now, &local);
    char text[16];
    return std::string(text, std::strftime(text, sizeof text, "%Y-%m-%d", &local));
}

// A value spanning several lines would end the comment; it is kept on one.
std::string oneLine(std::string text)
{
    std::replace(text.begin(), text.end(), '\n', ' ');
    std::replace(text.begin(), text.end(), '\r', ' ');
    return text;
}

std::string header(VQDReader& reader, const VQDMetadata& metadata, const TsvExport& table)
{
    std::string out = "# Tessaly TSV Export\n";
    out += "# export:date = " + localDate() + '\n';
    out += "# export:event count = " + std::to_string(table.events.size()) + '\n';
    if (!table.changedSampleName.empty())
        out += "# export:changed sample name = " + oneLine(table.changedSampleName) + '\n';
    for (const auto& [key, value] : metadata.allAttributes)
        out += "# " + oneLine(key) + " = " + oneLine(value) + '\n';
    out += "#\n";
    for (std::size_t i = 0; i < table.features.size(); ++i) {
        if (i > 0)
            out += '\t';
        out += oneLine(reader.featureLabel(table.features[i]));
    }
    out += '\n';
    return out;
}

// Formats rows [first, last) into `buffer`, which has room for them, and returns the length.
std::size_t formatRows(const std::vector<const std::vector<double>*>& columns,
    const std::vector<std::int32_t>& events, std::size_t first, std::size_t last, char* buffer)
{
    char* out = buffer;
    for (std::size_t row = first; row < last; ++row) {
        const std::int32_t event = events[row];
        for (std::size_t c = 0; c < columns.size(); ++c) {
            if (c > 0)
                *out++ = '\t';
            const std::vector<double>& column = *columns[c];
            if (event >= 0 && static_cast<std::size_t>(event) < column.size())
                out = putValue(out, column[static_cast<std::size_t>(event)]);
        }
        *out++ = '\n';
    }
    return static_cast<std::size_t>(out - buffer);
}

struct Block
{
    std::vector<char> text;
    std::size_t length = 0;
};

} // namespace

std::string formatSignificant17(double value)
{
    char text[maxCellBytes + cellSlack];
    return std::string(text, putValue(text, value));
}

bool writeTsv(const std::string& path, VQDReader& reader, const VQDMetadata& metadata, const TsvExport& table)
{
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) {
        std::cerr << ("Error creating file '" + path + "'\n") << std::flush;
        return false;
    }
    // Columns are fetched once; the reader's cache keeps them in place while the rows are formatted.
    std::vector<const std::vector<double>*> columns;
    for (const std::string& name : table.features)
        columns.push_back(&reader.getFeature(name));

    bool ok = true;
    const std::string head = header(reader, metadata, table);
    ok = std::fwrite(head.data(), 1, head.size(), file) == head.size();

    const std::size_t rows = table.events.size();
    const std::size_t rowBytes = table.features.size() * maxCellBytes + 1;
    const std::size_t blockRows = std::clamp<std::size_t>(blockBytes / rowBytes, 64, rowsPerBlock);
    const std::size_t workers = std::max(1u, std::min(std::thread::hardware_concurrency(), 8u));

    // A thread or a buffer that can't be had fails the export like a full disk, without leaving the
    // file open; blocks under way are awaited when their futures go.
    try {
        // As many blocks are being formatted as there are cores; each finished block's buffer serves a
        // later one, so the memory stays at workers + 1 blocks however long the table.
        std::deque<std::future<Block>> pending;
        std::vector<std::vector<char>> spare;
        std::size_t next = 0;
        const auto launch = [&] {
            const std::size_t first = next;
            const std::size_t last = std::min(rows, first + blockRows);
            next = last;
            std::vector<char> text;
            if (!spare.empty()) {
                text = std::move(spare.back());
                spare.pop_back();
            }
            pending.push_back(std::async(std::launch::async,
                [&columns, &table, first, last, rowBytes, text = std::move(text)]() mutable {
                    text.resize(std::max(text.size(), (last - first) * rowBytes + cellSlack));
                    const std::size_t length = formatRows(columns, table.events, first, last, text.data());
                    return Block { std::move(text), length };
                }));
        };
        while (ok && next < rows && pending.size() < workers)
            launch();
        while (!pending.empty()) {
            Block block = pending.front().get();
            pending.pop_front();
            // After a failed write the blocks under way are only awaited.
            if (ok && next < rows)
                launch();
            if (ok)
                ok = std::fwrite(block.text.data(), 1, block.length, file) == block.length;
            spare.push_back(std::move(block.text));
        }
    } catch (const std::exception& error) {
        std::cerr << ("Error formatting file '" + path + "': " + error.what() + '\n') << std::flush;
        ok = false;
    }
    ok = std::fflush(file) == 0 && ok;
    ok = std::fclose(file) == 0 && ok;
    if (!ok)
        std::cerr << ("Error writing file '" + path + "'\n") << std::flush;
    return ok;
}

} // namespace Tessaly
