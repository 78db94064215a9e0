#include "io/TsvWriter.h"

#include "io/VQDReader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <future>
#include <iostream>
#include <thread>

namespace Tessaly {

namespace {

// Rows are formatted in blocks, several blocks at once, and written in order.
constexpr std::size_t rowsPerBlock = 16384;

constexpr std::uint64_t pow10Table[] = { 1ULL, 10ULL, 100ULL, 1000ULL, 10000ULL, 100000ULL, 1000000ULL,
    10000000ULL, 100000000ULL, 1000000000ULL, 10000000000ULL, 100000000000ULL, 1000000000000ULL,
    10000000000000ULL, 100000000000000ULL, 1000000000000000ULL, 10000000000000000ULL, 100000000000000000ULL,
    1000000000000000000ULL, 10000000000000000000ULL };

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

// "%.17g" of a positive finite value between 10^-4 and 10^15, where it prints in fixed notation;
// false outside, for the general conversion to take over. The common case of measured values, done
// in integers, is several times faster than the general conversion.
bool appendFixedSeventeen(std::string& out, double value)
{
    if (!(value >= 1e-4 && value < 1e15))
        return false;
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    const int biased = static_cast<int>(bits >> 52);
    if (biased == 0)
        return false;
    const std::uint64_t mantissa = (bits & ((1ULL << 52) - 1)) | (1ULL << 52);
    const int exponent = biased - 1075;
    if (exponent >= 0)
        return false; // whole numbers, printed elsewhere
    // The decimal exponent from the binary one: at most one too low, which the digits then show, as
    // they do when rounding carries up to 10^17.
    int e = static_cast<int>(std::floor((biased - 1023) * 0.30102999566398120));
    std::uint64_t digits = digitsAt(mantissa, exponent, e);
    if (digits >= pow10Table[17])
        digits = digitsAt(mantissa, exponent, ++e);
    else if (digits < pow10Table[16])
        digits = digitsAt(mantissa, exponent, --e);
    if (e < -4 || e > 14 || digits < pow10Table[16] || digits >= pow10Table[17])
        return false;

    char text[17];
    for (int i = 16; i >= 0; --i) {
        text[i] = static_cast<char>('0' + digits % 10);
        digits /= 10;
    }
    int last = 16; // trailing zeros go, as "%g" drops them
    while (last > 0 && text[last] == '0')
        --last;
    if (e >= 0) {
        out.append(text, static_cast<std::size_t>(e) + 1);
        if (last > e) {
            out += '.';
            out.append(text + e + 1, static_cast<std::size_t>(last - e));
        }
    } else {
        out += "0.";
        out.append(static_cast<std::size_t>(-e - 1), '0');
        out.append(text, static_cast<std::size_t>(last) + 1);
    }
    return true;
}

// Appends the value as "%.17g" would print it. Whole numbers below 10^15 in magnitude print as their
// digits alone, and values in fixed notation go through integers; both save most of the time of the
// general conversion.
inline void appendValue(std::string& out, double value)
{
    char text[32];
    if (value == std::trunc(value) && std::fabs(value) < 1e15 && value != 0.0) {
        out.append(text, std::to_chars(text, text + sizeof text, static_cast<long long>(value)).ptr);
        return;
    }
    if (std::signbit(value) && value < 0.0) {
        const std::size_t mark = out.size();
        out += '-';
        if (appendFixedSeventeen(out, -value))
            return;
        out.resize(mark);
    } else if (appendFixedSeventeen(out, value)) {
        return;
    }
    out.append(text, std::to_chars(text, text + sizeof text, value, std::chars_format::general, 17).ptr);
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

std::string formatRows(const std::vector<const std::vector<double>*>& columns,
    const std::vector<std::int32_t>& events, std::size_t first, std::size_t last)
{
    std::string out;
    out.reserve((last - first) * (columns.size() * 20 + 1));
    for (std::size_t row = first; row < last; ++row) {
        const auto event = static_cast<std::size_t>(events[row]);
        for (std::size_t c = 0; c < columns.size(); ++c) {
            if (c > 0)
                out += '\t';
            const std::vector<double>& column = *columns[c];
            if (events[row] >= 0 && event < column.size())
                appendValue(out, column[event]);
        }
        out += '\n';
    }
    return out;
}

} // namespace

std::string formatSignificant17(double value)
{
    std::string text;
    appendValue(text, value);
    return text;
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
    const std::size_t workers = std::max(1u, std::min(std::thread::hardware_concurrency(), 8u));
    for (std::size_t start = 0; ok && start < rows; start += workers * rowsPerBlock) {
        std::vector<std::future<std::string>> blocks;
        for (std::size_t w = 0; w < workers; ++w) {
            const std::size_t first = std::min(rows, start + w * rowsPerBlock);
            const std::size_t last = std::min(rows, first + rowsPerBlock);
            if (first == last)
                break;
            blocks.push_back(std::async(w == 0 ? std::launch::deferred : std::launch::async,
                [&columns, &table, first, last] { return formatRows(columns, table.events, first, last); }));
        }
        for (std::future<std::string>& block : blocks) {
            const std::string text = block.get();
            if (ok)
                ok = std::fwrite(text.data(), 1, text.size(), file) == text.size();
        }
    }
    ok = std::fflush(file) == 0 && ok;
    ok = std::fclose(file) == 0 && ok;
    if (!ok)
        std::cerr << ("Error writing file '" + path + "'\n") << std::flush;
    return ok;
}

} // namespace Tessaly
