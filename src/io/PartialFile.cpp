#include "io/PartialFile.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace Tessaly {

namespace {

std::string randomTag()
{
    static const char alphabet[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::random_device device;
    std::mt19937 generator(device());
    std::uniform_int_distribution<int> pick(0, sizeof alphabet - 2);
    std::string tag(8, 'x');
    for (char& c : tag)
        c = alphabet[pick(generator)];
    return tag;
}

bool exists(const std::string& path)
{
    struct stat info;
    return ::lstat(path.c_str(), &info) == 0;
}

} // namespace

PartialFile::PartialFile(const std::string& finalPath)
    : m_finalPath(finalPath)
{
    const std::size_t slash = finalPath.rfind('/');
    const std::string folder = slash == std::string::npos ? std::string() : finalPath.substr(0, slash + 1);
    const std::string name = slash == std::string::npos ? finalPath : finalPath.substr(slash + 1);
    const std::size_t dot = name.rfind('.');
    const std::string suffix = dot == std::string::npos || dot == 0 ? std::string() : name.substr(dot);
    do
        m_temporaryPath = folder + '.' + name + '.' + randomTag() + ".part" + suffix;
    while (exists(m_temporaryPath));
}

PartialFile::~PartialFile()
{
    if (!m_committed)
        discard();
}

void PartialFile::discard()
{
    ::unlink(m_temporaryPath.c_str());
}

bool PartialFile::commit()
{
    if (m_committed)
        return true;
    // Renaming without replacing: the target name was free when it was chosen, but another program
    // may have taken it since, and a file of the user's must never be overwritten.
    int result
        = ::renameat2(AT_FDCWD, m_temporaryPath.c_str(), AT_FDCWD, m_finalPath.c_str(), RENAME_NOREPLACE);
    if (result != 0 && (errno == EINVAL || errno == ENOSYS)) {
        // File systems without that kind of rename: a hard link fails as well when the name is taken.
        result = ::link(m_temporaryPath.c_str(), m_finalPath.c_str());
        if (result == 0)
            ::unlink(m_temporaryPath.c_str());
    }
    if (result != 0) {
        discard();
        return false;
    }
    m_committed = true;
    return true;
}

} // namespace Tessaly
