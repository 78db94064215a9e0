#include "io/TsvWriter.h"

#include "io/VQDReader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <future>
#include <iostream>
#include <thread>

namespace Tessaly {

namespace {

// Rows are formatted in blocks, several blocks at once, and written in order.
constexpr std::size_t rowsPerBlock = 16384;

// Appends the value as "%.17g" would print it. Whole numbers below 10^15 in magnitude print as their
// digits alone; taking them apart from the general conversion saves most of its time for columns of
// counts and indices.
inline void appendValue(std::string& out, double value)
{
    char text[32];
    char* end;
    if (value == std::trunc(value) && std::fabs(value) < 1e15 && value != 0.0)
        end = std::to_chars(text, text + sizeof text, static_cast<long long>(value)).ptr;
    else
        end = std::to_chars(text, text + sizeof text, value, std::chars_format::general, 17).ptr;
    out.append(text, end);
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
