#pragma once

#include <string>

namespace Tessaly {

// A file written under a hidden temporary name beside its final place, and moved there only when it
// is complete, so that a failed or cancelled write never leaves half a file under the final name.
// The temporary name keeps the final suffix, for writers that choose their format by it.
//
//     PartialFile target("/data/TSYexport_a.tsv");
//     write(target.path());
//     if (!ok || !target.commit()) ...   // the destructor removes what was written
class PartialFile
{
public:
    explicit PartialFile(const std::string& finalPath);
    // Removes the temporary file unless it was committed.
    ~PartialFile();
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;

    // Where to write.
    const std::string& path() const { return m_temporaryPath; }
    const std::string& finalPath() const { return m_finalPath; }

    // Moves the written file to its final name. Never replaces a file that appeared there meanwhile:
    // false then, and when the move fails, with the temporary file removed.
    bool commit();
    // Removes the temporary file now.
    void discard();

private:
    std::string m_finalPath;
    std::string m_temporaryPath;
    bool m_committed = false;
};

} // namespace Tessaly
