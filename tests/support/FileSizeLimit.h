#pragma once

#include <csignal>
#include <sys/resource.h>

namespace Tessaly::Testing {

// While it lives, no file of this process may grow beyond `bytes`: a write past that fails as on a
// full disk (EFBIG), instead of ending the process by SIGXFSZ.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        previousHandler = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &previous);
        rlimit limited = previous;
        limited.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limited);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &previous);
        std::signal(SIGXFSZ, previousHandler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit previous {};
    void (*previousHandler)(int) = SIG_DFL;
};

} // namespace Tessaly::Testing
