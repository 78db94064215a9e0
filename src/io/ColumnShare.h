#pragma once

#include <QString>
#include <QStringList>
#include <string>
#include <vector>

namespace Tessaly {

// The columns that one probe decodes when several share the check of a file's columns, and where it
// hands them over (see ColumnHandover). Only one of the probes also reads the first and last frames
// and traces, as the check of a whole file does.
struct ColumnShare
{
    std::vector<std::string> columns;
    bool frames = true;
    QString output;

    // The probe program's options for this share, and the way back: false, with `share` undefined,
    // for options that aren't a share's. Parsing takes the options from the front of `arguments`
    // and leaves the rest.
    QStringList options() const;
    static bool parse(QStringList& arguments, ColumnShare& share);
};

} // namespace Tessaly
