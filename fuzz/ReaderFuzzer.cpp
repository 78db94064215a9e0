// libFuzzer target: any bytes as a measurement file, put through what opening a dataset in the
// program runs. The input goes to a temporary file because the reader, like the program, opens paths.
// A crash, a sanitizer report, a timeout or a memory blow-up is a finding; error lines of the reader,
// neutral results and files refused by the probe are the expected answer to a hostile file.
#include "io/FileProbe.h"
#include "io/Hdf5Filters.h"
#include "io/ReadLimits.h"
#include "io/VQDReader.h"

#include <H5Cpp.h>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <sanitizer/common_interface_defs.h>
#include <streambuf>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

std::string inputPath;

// Swallows the reader's standard-error lines: one per refused object, thousands a second.
class DiscardingBuffer : public std::streambuf
{
protected:
    int overflow(int c) override { return c; }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

void removeInputFile()
{
    if (!inputPath.empty())
        std::remove(inputPath.c_str());
}

bool writeInput(const std::uint8_t* data, std::size_t size)
{
    std::FILE* file = std::fopen(inputPath.c_str(), "wb");
    if (!file)
        return false;
    const bool written = size == 0 || std::fwrite(data, 1, size, file) == size;
    return std::fclose(file) == 0 && written;
}

void readEvent(Tessaly::VQDReader& reader, std::size_t index)
{
    int width = 0;
    int height = 0;
    reader.getImage(index, &width, &height);
    reader.getMask(index, &width, &height);
    for (const std::string& name : reader.traceNames())
        reader.getTrace(name, index);
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    H5::Exception::dontPrint();
    Tessaly::registerHdf5Filters();
    // Inputs are a few kilobytes. A larger allowance would only let declared sizes run into the
    // fuzzer's own memory limit, which is the same refusal the limit makes, found the slow way.
    Tessaly::setReadMemoryLimit(std::uint64_t { 64 } << 20);
    if (!std::getenv("TESSALY_FUZZ_VERBOSE")) {
        static DiscardingBuffer discard;
        std::cerr.rdbuf(&discard);
    }
    const char* folder = std::getenv("TMPDIR");
    std::string pattern = std::string(folder && *folder ? folder : "/tmp") + "/tessaly-fuzz-XXXXXX";
    const int descriptor = mkstemp(pattern.data());
    if (descriptor < 0) {
        std::perror("tessaly_reader_fuzzer: temporary file");
        std::exit(1);
    }
    close(descriptor);
    inputPath = pattern;
    std::atexit(removeInputFile);
    return 0;
}

// The program reads a file only after its probe process got through it, since faults inside the HDF5
// library can't be caught in-process. The fuzzer does the same, so that what it finds is what
// reaches the program. A probe that crashes, fails or hangs past ten seconds means a refused file.
bool probeGetsThrough()
{
    const pid_t child = fork();
    if (child < 0)
        return false;
    if (child == 0) {
        // The probe's own faults end it quietly, as they would the program's probe: no report of
        // the fuzzer's, whose handlers the child inherited.
        __sanitizer_set_death_callback(nullptr);
        for (const int signal : { SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL })
            std::signal(signal, SIG_DFL);
        std::cerr.rdbuf(nullptr);
        _exit(Tessaly::FileProbe::runProbe(
            QString::fromStdString(inputPath), Tessaly::FileProbe::Scope::Columns));
    }
    for (int waited = 0; waited < 500; ++waited) {
        int status = 0;
        if (waitpid(child, &status, WNOHANG) == child)
            return WIFEXITED(status) && WEXITSTATUS(status) == 0;
        usleep(10000);
    }
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    return false;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (!writeInput(data, size) || !probeGetsThrough())
        return 0;
    Tessaly::VQDReader reader;
    if (!reader.open(inputPath))
        return 0;
    reader.readMetadata();
    reader.featureNames();
    reader.cacheAllFeatures();
    // A filtered view of the first trace, as the fluorescence refinement adds it.
    const std::vector<std::string> traces = reader.traceNames();
    if (!traces.empty())
        reader.addTraceAlias(traces.front() + "_filtered", traces.front());
    readEvent(reader, 0);
    if (reader.eventCount() > 1)
        readEvent(reader, static_cast<std::size_t>(reader.eventCount() - 1));
    return 0;
}
