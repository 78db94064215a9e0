#include "io/Hdf5Filters.h"

#include "io/Hdf5Mutex.h"
#include "io/ReadLimits.h"

#include <algorithm>
#include <cstring>
#include <hdf5.h>
#include <mutex>
#include <string>
#include <sys/stat.h>
#include <zstd.h>

namespace Tessaly {

namespace {

// Where Debian's hdf5-filter-plugin installs its filters for the serial library build.
#if defined(__x86_64__)
const char* const systemPluginFolder = "/usr/lib/x86_64-linux-gnu/hdf5/serial/plugins";
#elif defined(__aarch64__)
const char* const systemPluginFolder = "/usr/lib/aarch64-linux-gnu/hdf5/serial/plugins";
#else
const char* const systemPluginFolder = nullptr;
#endif

// Bytes of a whole chunk of the dataset that this thread reads; 0 when not known.
thread_local std::size_t expectedChunkBytes = 0;

// Buffers handed back to HDF5 are released by the library, so they come from its allocator.
void* allocate(std::size_t size)
{
    return H5allocate_memory(size, false);
}

std::size_t replaceBuffer(
    void* output, std::size_t capacity, std::size_t used, std::size_t* bufferSize, void** buffer)
{
    H5free_memory(*buffer);
    *buffer = output;
    *bufferSize = capacity;
    return used;
}

std::size_t compress(const unsigned int cdValues[], std::size_t cdCount, std::size_t byteCount,
    std::size_t* bufferSize, void** buffer)
{
    const int level = cdCount > 0 ? static_cast<int>(cdValues[0]) : ZSTD_CLEVEL_DEFAULT;
    const std::size_t capacity = ZSTD_compressBound(byteCount);
    void* output = allocate(capacity);
    if (!output)
        return 0;
    const std::size_t size = ZSTD_compress(output, capacity, *buffer, byteCount, level);
    if (ZSTD_isError(size)) {
        H5free_memory(output);
        return 0;
    }
    return replaceBuffer(output, capacity, size, bufferSize, buffer);
}

// The library takes a decoded buffer for a whole chunk, whatever the frame held: a frame that
// decodes to fewer bytes than the chunk has would leave it reading past the end. The output is
// therefore never smaller than the buffer handed in, which the library sizes for a whole chunk, and
// the bytes that nothing was decoded into are zero.
std::size_t replaceDecoded(
    void* output, std::size_t capacity, std::size_t used, std::size_t* bufferSize, void** buffer)
{
    if (expectedChunkBytes > 0 && used < expectedChunkBytes) {
        H5free_memory(output);
        return 0;
    }
    std::memset(static_cast<char*>(output) + used, 0, capacity - used);
    return replaceBuffer(output, capacity, used, bufferSize, buffer);
}

// Frames written by a streaming compressor don't record their content size; the output then grows
// as the stream is decoded.
std::size_t decompressStream(std::size_t byteCount, std::size_t* bufferSize, void** buffer)
{
    ZSTD_DStream* stream = ZSTD_createDStream();
    if (!stream)
        return 0;
    std::size_t capacity = std::max({ ZSTD_DStreamOutSize(), 2 * byteCount, *bufferSize });
    void* output = allocate(capacity);
    ZSTD_inBuffer in { *buffer, byteCount, 0 };
    ZSTD_outBuffer out { output, capacity, 0 };
    std::size_t status = 0;
    bool failed = output == nullptr;
    while (!failed) {
        status = ZSTD_decompressStream(stream, &out, &in);
        if (ZSTD_isError(status)) {
            failed = true;
            break;
        }
        if (in.pos == in.size && status == 0)
            break; // every frame of the input is complete
        if (out.pos == out.size) {
            // A small frame can claim to decode to any size; the output stops at what one read may take.
            if (2 * capacity > readMemoryLimit()) {
                failed = true;
                break;
            }
            void* grown = H5resize_memory(output, 2 * capacity);
            if (!grown) {
                failed = true;
                break;
            }
            output = grown;
            capacity *= 2;
            out.dst = output;
            out.size = capacity;
        } else if (in.pos == in.size) {
            failed = true; // input ends inside a frame
        }
    }
    ZSTD_freeDStream(stream);
    if (failed) {
        H5free_memory(output);
        return 0;
    }
    return replaceDecoded(output, capacity, out.pos, bufferSize, buffer);
}

std::size_t decompress(std::size_t byteCount, std::size_t* bufferSize, void** buffer)
{
    const unsigned long long contentSize = ZSTD_getFrameContentSize(*buffer, byteCount);
    if (contentSize == ZSTD_CONTENTSIZE_ERROR)
        return 0;
    if (contentSize == ZSTD_CONTENTSIZE_UNKNOWN)
        return decompressStream(byteCount, bufferSize, buffer);
    // The recorded size comes from the file: a few bytes may claim any size.
    if (contentSize > readMemoryLimit())
        return 0;
    // An empty chunk still needs a valid buffer.
    const std::size_t capacity
        = std::max<std::size_t>({ static_cast<std::size_t>(contentSize), *bufferSize, 1 });
    void* output = allocate(capacity);
    if (!output)
        return 0;
    const std::size_t size = ZSTD_decompress(output, capacity, *buffer, byteCount);
    if (!ZSTD_isError(size))
        return replaceDecoded(output, capacity, size, bufferSize, buffer);
    H5free_memory(output);
    // The size recorded is that of the first frame only; more frames may follow it.
    return decompressStream(byteCount, bufferSize, buffer);
}

bool isDirectory(const std::string& path)
{
    struct stat info;
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool pluginPathContains(const std::string& folder)
{
    unsigned int count = 0;
    if (H5PLsize(&count) < 0)
        return false;
    for (unsigned int i = 0; i < count; ++i) {
        const ssize_t length = H5PLget(i, nullptr, 0);
        if (length <= 0)
            continue;
        std::string entry(static_cast<std::size_t>(length) + 1, '\0');
        H5PLget(i, entry.data(), entry.size());
        entry.resize(static_cast<std::size_t>(length));
        while (entry.size() > 1 && entry.back() == '/')
            entry.pop_back();
        if (entry == folder)
            return true;
    }
    return false;
}

const H5Z_class2_t zstdFilterClass = {
    H5Z_CLASS_T_VERS,
    static_cast<H5Z_filter_t>(zstdFilterId),
    1, // encoder present
    1, // decoder present
    "Zstandard",
    nullptr,
    nullptr,
    &zstdFilter,
};

} // namespace

ExpectedChunkSize::ExpectedChunkSize(std::size_t bytes)
    : m_previous(expectedChunkBytes)
{
    expectedChunkBytes = bytes;
}

ExpectedChunkSize::~ExpectedChunkSize()
{
    expectedChunkBytes = m_previous;
}

bool addHdf5PluginFolder(const std::string& folder)
{
    if (folder.empty() || !isDirectory(folder))
        return false;
    std::lock_guard<std::recursive_mutex> lock(hdf5Mutex());
    std::string trimmed = folder;
    while (trimmed.size() > 1 && trimmed.back() == '/')
        trimmed.pop_back();
    bool added = false;
    H5E_BEGIN_TRY
    {
        added = pluginPathContains(trimmed) || H5PLprepend(trimmed.c_str()) >= 0;
    }
    H5E_END_TRY;
    return added;
}

std::size_t zstdFilter(unsigned int flags, std::size_t cdCount, const unsigned int cdValues[],
    std::size_t byteCount, std::size_t* bufferSize, void** buffer)
{
    if (!buffer || !*buffer || !bufferSize)
        return 0;
    if (flags & H5Z_FLAG_REVERSE)
        return decompress(byteCount, bufferSize, buffer);
    return compress(cdValues, cdCount, byteCount, bufferSize, buffer);
}

void registerHdf5Filters()
{
    static std::once_flag once;
    std::call_once(once, [] {
        std::lock_guard<std::recursive_mutex> lock(hdf5Mutex());
        H5open();
        // Usually the library's default plugin path already is this folder; a library built
        // elsewhere, or a plugin path set in the environment, would miss it.
        if (systemPluginFolder)
            addHdf5PluginFolder(systemPluginFolder);
        // Probing for a plugin pushes errors on the library's stack when none is found; that is
        // expected here and must not be printed.
        H5E_BEGIN_TRY
        {
            if (H5Zfilter_avail(static_cast<H5Z_filter_t>(zstdFilterId)) <= 0)
                H5Zregister(&zstdFilterClass);
        }
        H5E_END_TRY;
    });
}

} // namespace Tessaly
