#pragma once

#include "io/ColumnShare.h"

#include <QDateTime>
#include <QString>
#include <functional>
#include <string>
#include <vector>

namespace Tessaly {

class VQDReader;

// The check of every column of a file before the program uses them, by several probe processes at
// once (see FileProbe), each over its share of the columns. Each probe hands the columns it decoded
// over to the reader (see ColumnHandover), so that they are decoded once, on all cores, and never by
// the program itself. Columns wanted first, such as those of the plot, get a small probe of their
// own, so that they are in long before the rest.
class ColumnCheck
{
public:
    // True, as FileProbe::check is, when every probe finished without fault or there is no probe
    // program; `reader` then holds what was handed over, and the program reads the rest itself. On
    // false `failure` says why, in the words of FileProbeTexts, and `reader` may hold some columns.
    // `firstIn` is called, on this thread, once the `first` columns are in the reader; the other
    // probes start when it returns. Waits for the probes: for threads other than the interface's.
    static bool run(const QString& path, VQDReader& reader, QString* failure = nullptr,
        const std::vector<std::string>& first = {}, const std::function<void()>& firstIn = {});

    // The shares of `columns` (listed, scalar, in order) among `probes` probes: the `first` ones that
    // are listed make a share of their own, then the rest go round the probes in turn. Every column
    // is in one share; empty shares are left out, but one share always remains to read the frames.
    static std::vector<ColumnShare> shares(
        const std::vector<std::string>& columns, const std::vector<std::string>& first, int probes);

    // How many probes share the bulk of the columns: one per core, at most four, since each also
    // opens the file.
    static int probeCount();
    // Where hand-overs are written: a folder in memory where the system has one, else the folder for
    // temporary files.
    static QString handoverFolder();
    // Removes hand-overs in `folder` last written before `olderThan`: a program that was killed while
    // it checked a file leaves them behind, and in a folder in memory they hold on to memory. A
    // check in progress writes its hand-overs within the probes' time limit, so an hour's age
    // marks them as left over. Returns how many went.
    static int removeLeftOverHandovers(const QString& folder, const QDateTime& olderThan);
};

} // namespace Tessaly
