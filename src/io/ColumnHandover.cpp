#include "io/ColumnHandover.h"

#include "io/ReadLimits.h"
#include "io/VQDReader.h"

#include <QFile>
#include <QIODevice>
#include <algorithm>
#include <optional>

namespace Tessaly {

namespace {

const QByteArray magic("TSYCOLS1", 8);

template <typename T> bool writeValue(QIODevice& device, T value)
{
    return device.write(reinterpret_cast<const char*>(&value), sizeof value) == qint64(sizeof value);
}

template <typename T> bool readValue(QIODevice& device, T& value)
{
    return device.read(reinterpret_cast<char*>(&value), sizeof value) == qint64(sizeof value);
}

// Reads exactly `bytes` into `target`; large reads may come back in parts.
bool readExactly(QIODevice& device, char* target, std::uint64_t bytes)
{
    while (bytes > 0) {
        const qint64 got = device.read(target, static_cast<qint64>(std::min<std::uint64_t>(bytes, 1u << 30)));
        if (got <= 0)
            return false;
        target += got;
        bytes -= static_cast<std::uint64_t>(got);
    }
    return true;
}

} // namespace

bool ColumnHandover::writeStart(QIODevice& device)
{
    return device.write(magic) == magic.size();
}

bool ColumnHandover::writeColumn(
    QIODevice& device, const std::string& name, const std::vector<double>& values)
{
    if (name.size() > maxNameLength)
        return false;
    const auto bytes = static_cast<qint64>(values.size() * sizeof(double));
    return writeValue(device, static_cast<std::uint32_t>(name.size()))
        && device.write(name.data(), static_cast<qint64>(name.size())) == qint64(name.size())
        && writeValue(device, static_cast<std::uint64_t>(values.size()))
        && device.write(reinterpret_cast<const char*>(values.data()), bytes) == bytes;
}

int ColumnHandover::adopt(QIODevice& device, VQDReader& reader)
{
    if (device.read(magic.size()) != magic)
        return 0;
    int adopted = 0;
    for (;;) {
        std::uint32_t nameLength = 0;
        if (!readValue(device, nameLength) || nameLength == 0 || nameLength > maxNameLength)
            break;
        std::string name(nameLength, '\0');
        std::uint64_t count = 0;
        if (!readExactly(device, name.data(), nameLength) || !readValue(device, count))
            break;
        // The count must be the dataset's own length, and the values must be there, before any memory
        // is given to them: a stream that claims more than it holds allocates nothing.
        const std::optional<std::uint64_t> expected = reader.adoptableLength(name);
        const std::uint64_t bytes = saturatingProduct(count, sizeof(double));
        if (!expected || *expected != count || memoryRefusal(name, bytes)
            || (!device.isSequential() && bytes > static_cast<std::uint64_t>(device.bytesAvailable())))
            break;
        std::vector<double> values(static_cast<std::size_t>(count));
        if (!readExactly(device, reinterpret_cast<char*>(values.data()), bytes))
            break;
        if (!reader.adoptFeature(name, std::move(values)))
            break;
        ++adopted;
    }
    return adopted;
}

int ColumnHandover::adoptFile(const QString& path, VQDReader& reader)
{
    QFile file(path);
    // Unbuffered: the values go straight from the file into the columns.
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return 0;
    return adopt(file, reader);
}

} // namespace Tessaly
