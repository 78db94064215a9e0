#pragma once

#include <QString>
#include <cstdint>
#include <string>
#include <vector>

class QByteArray;
class QIODevice;

namespace Tessaly {

class VQDReader;

// The file check decodes columns in processes of its own; this is how it hands them over, so that the
// program need not decode them a second time. A hand-over is a stream of records, each a column
// exactly as the reader of the checking process served it (doubles in this machine's byte order),
// written by the probe and read by the program on the same machine:
//
//     magic (8 bytes)
//     { name length (uint32) 0 (uint32) name (bytes, zeros up to a multiple of 8) value count (uint64)
//       values (doubles) }...
//
// The program takes nothing on trust: a record is adopted only for a column that its own reader
// lists and hasn't cached, with as many values as the dataset holds, and only when the stream
// really holds them; the first record that fails ends the reading. Whatever isn't adopted is read by
// the program itself.
class ColumnHandover
{
public:
    // Starts a hand-over on `device`; false when it can't be written.
    static bool writeStart(QIODevice& device);
    static bool writeColumn(QIODevice& device, const std::string& name, const std::vector<double>& values);

    // Adopts the records of a hand-over into `reader`'s cache; returns how many were taken.
    static int adopt(const char* data, std::uint64_t size, VQDReader& reader);
    static int adopt(const QByteArray& bytes, VQDReader& reader);
    // The same for the hand-over in the file `path`; 0 when it can't be opened.
    static int adoptFile(const QString& path, VQDReader& reader);

    // Names longer than this are no feature names; their record ends the reading.
    static constexpr std::uint32_t maxNameLength = 4096;
};

} // namespace Tessaly
