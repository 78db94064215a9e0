#pragma once

#include <cstddef>
#include <string>

namespace Tessaly {

// Registered HDF5 filter id of Zstandard compression.
constexpr int zstdFilterId = 32015;

// Makes compressed columns readable: registers a Zstandard filter (decoder and encoder) unless a
// plugin already provides one, and makes sure the system's HDF5 filter plugin folder (LZ4, BZip2) is
// searched. Safe to call from any thread and any number of times; only the first call does work.
void registerHdf5Filters();

// Puts `folder` first in the library's plugin search path unless the path holds it already. False
// when the folder doesn't exist or the library refuses it.
bool addHdf5PluginFolder(const std::string& folder);

// While it lives, decoded Zstandard chunks on this thread must hold `bytes`, the size of one chunk
// of the dataset being read: the library takes every decoded buffer for a whole chunk, so a chunk
// that decodes to less is damaged and fails instead of letting the library read past its end.
// Without such a scope a short chunk is padded with zeros up to the size of the encoded buffer.
class ExpectedChunkSize
{
public:
    explicit ExpectedChunkSize(std::size_t bytes);
    ~ExpectedChunkSize();
    ExpectedChunkSize(const ExpectedChunkSize&) = delete;
    ExpectedChunkSize& operator=(const ExpectedChunkSize&) = delete;

private:
    std::size_t m_previous;
};

// The filter callback itself, in the signature HDF5 expects. Encoding takes the compression level
// from cdValues[0] when given. Decoding accepts frames with or without a recorded content size.
// Returns the number of valid bytes in *buffer, or 0 on failure (the buffer is then unchanged).
std::size_t zstdFilter(unsigned int flags, std::size_t cdCount, const unsigned int cdValues[],
    std::size_t byteCount, std::size_t* bufferSize, void** buffer);

} // namespace Tessaly
