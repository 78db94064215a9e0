#include "io/ColumnHandover.h"

#include "io/ReadLimits.h"
#include "io/VQDReader.h"

#include <QFile>
#include <QIODevice>
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>

namespace Tessaly {

namespace {

const QByteArray magic("TSYCOLS1", 8);

// Names are padded to whole words, so that in a hand-over that starts on a word, as a mapped file
// does, every column's values lie on their natural boundary and are copied as they stand.
constexpr std::uint64_t word = 8;

std::uint64_t padded(std::uint64_t bytes)
{
    return (bytes + word - 1) / word * word;
}

template <typename T> bool writeValue(QIODevice& device, T value)
{
    return device.write(reinterpret_cast<const char*>(&value), sizeof value) == qint64(sizeof value);
}

template <typename T> T valueAt(const char* data)
{
    T value;
    std::memcpy(&value, data, sizeof value);
    return value;
}

} // namespace

bool ColumnHandover::writeStart(QIODevice& device)
{
    return device.write(magic) == magic.size();
}

bool ColumnHandover::writeColumn(
    QIODevice& device, const std::string& name, const std::vector<double>& values)
{
    if (name.empty() || name.size() > maxNameLength)
        return false;
    const QByteArray padding(static_cast<int>(padded(name.size()) - name.size()), '\0');
    const auto bytes = static_cast<qint64>(values.size() * sizeof(double));
    return writeValue(device, static_cast<std::uint32_t>(name.size()))
        && writeValue(device, std::uint32_t { 0 })
        && device.write(name.data(), static_cast<qint64>(name.size())) == qint64(name.size())
        && device.write(padding) == padding.size()
        && writeValue(device, static_cast<std::uint64_t>(values.size()))
        && device.write(reinterpret_cast<const char*>(values.data()), bytes) == bytes;
}

int ColumnHandover::adopt(const char* data, std::uint64_t size, VQDReader& reader)
{
    if (size < static_cast<std::uint64_t>(magic.size())
        || std::memcmp(data, magic.constData(), magic.size()) != 0)
        return 0;
    std::uint64_t offset = magic.size();
    int adopted = 0;
    // Every length is checked against what is left before it is used, so that no sum can overflow.
    while (size - offset >= 2 * sizeof(std::uint32_t)) {
        const auto nameLength = valueAt<std::uint32_t>(data + offset);
        if (nameLength == 0 || nameLength > maxNameLength || valueAt<std::uint32_t>(data + offset + 4) != 0)
            break;
        offset += 2 * sizeof(std::uint32_t);
        if (size - offset < padded(nameLength) + sizeof(std::uint64_t))
            break;
        const std::string name(data + offset, nameLength);
        offset += padded(nameLength);
        const auto count = valueAt<std::uint64_t>(data + offset);
        offset += sizeof(std::uint64_t);
        // The count must be the dataset's own length and the values must all be there before any
        // memory is given to them: a hand-over that claims more than it holds allocates nothing.
        const std::optional<std::uint64_t> expected = reader.adoptableLength(name);
        if (!expected || *expected != count || count > (size - offset) / sizeof(double))
            break;
        const std::uint64_t bytes = count * sizeof(double);
        if (memoryRefusal(name, bytes))
            break;
        const char* first = data + offset;
        std::vector<double> values;
        if (reinterpret_cast<std::uintptr_t>(first) % alignof(double) == 0) {
            // Copied once, without filling the column with zeros first.
            const auto* doubles = reinterpret_cast<const double*>(first);
            values.assign(doubles, doubles + count);
        } else if (count > 0) {
            values.resize(static_cast<std::size_t>(count));
            std::memcpy(values.data(), first, static_cast<std::size_t>(bytes));
        }
        offset += bytes;
        if (!reader.adoptFeature(name, std::move(values)))
            break;
        ++adopted;
    }
    return adopted;
}

int ColumnHandover::adopt(const QByteArray& bytes, VQDReader& reader)
{
    return adopt(bytes.constData(), static_cast<std::uint64_t>(bytes.size()), reader);
}

int ColumnHandover::adoptFile(const QString& path, VQDReader& reader)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() <= 0)
        return 0;
    // Mapped, the values go from the file's pages straight into the columns.
    const uchar* mapped = file.map(0, file.size());
    if (!mapped)
        return adopt(file.readAll(), reader);
    const int adopted
        = adopt(reinterpret_cast<const char*>(mapped), static_cast<std::uint64_t>(file.size()), reader);
    file.unmap(const_cast<uchar*>(mapped));
    return adopted;
}

} // namespace Tessaly
