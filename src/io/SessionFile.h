#pragma once

#include "core/DatasetEntry.h"
#include "core/FilterGroup.h"

#include <QByteArray>
#include <QDateTime>
#include <QDir>
#include <QJsonObject>
#include <QString>
#include <QtGlobal>
#include <string>
#include <vector>

namespace Tessaly {

class VQDReader;

inline constexpr int sessionFileVersion = 1;
inline const QString sessionFileSuffix = QStringLiteral(".TSY");

// What identifies the file behind a dataset well enough to notice that it was replaced or changed
// since a session was saved: its size on disk, its event count and which features it has.
struct SessionFingerprint
{
    qint64 fileSize = -1;
    qint64 eventCount = -1;
    QString featureHash;

    bool operator==(const SessionFingerprint& other) const
    {
        return fileSize == other.fileSize && eventCount == other.eventCount
            && featureHash == other.featureHash;
    }
    bool operator!=(const SessionFingerprint& other) const { return !(*this == other); }
};

// The names sorted bytewise and hashed one after the other without separators (SHA-256), as the
// first 12 lower-case hexadecimal digits. Independent of the order the names come in.
QString featureHash(std::vector<std::string> names);

// The fingerprint of an open reader and the file at `path` as it is now. Features computed during
// the session count, so a dataset saved after a calculation differs from its file opened afresh.
SessionFingerprint fingerprintOf(VQDReader& reader, const QString& path);

// All that a session file records of the main window. Datasets are in list order: the position of
// a dataset is its session index.
struct SessionSnapshot
{
    std::vector<const DatasetEntry*> datasets;
    int activeDatasetIndex = 0;
    int colorMapIndex = 0;
    std::vector<const FilterGroup*> groups;
    int nextGroupId = 0;
};

// The session document as indented JSON. Paths are stored relative to the folder of
// `sessionFilePath`, so that a session moved together with its data still finds it. A dataset that
// shares the reader of an earlier one is stored as its duplicate. Results of calculations are not
// stored, only which ran and with what.
QByteArray writeSessionDocument(const SessionSnapshot& snapshot, const QString& sessionFilePath,
    const QDateTime& savedAt = QDateTime::currentDateTimeUtc());

enum class SessionParseResult {
    Ok,
    // No JSON at all, or cut short: `error` holds the parser's reason.
    Invalid,
    // JSON, but without a usable "version".
    Unrecognized,
};

// Checks a document before anything of the running session is touched. On Ok, `root` holds it and
// `version` its format version (1 or above).
SessionParseResult parseSessionDocument(
    const QByteArray& bytes, QJsonObject* root, int* version, QString* error);

struct SessionMainWindowState
{
    int activeDatasetIndex = 0;
    int colorMapIndex = 0;
    bool expertMode = false;
};
SessionMainWindowState sessionMainWindowState(const QJsonObject& root);

// The dataset objects in session order. Entries that are no objects read as empty objects, so that
// the positions, which other entries refer to, stay as they were written.
std::vector<QJsonObject> sessionDatasets(const QJsonObject& root);

// What is needed to find and check a dataset's file before it is opened.
struct SessionDatasetRef
{
    // Absolute; a relative path is taken from the session's folder.
    QString filePath;
    QString displayName;
    bool isDuplicate = false;
    int duplicateOfIndex = -1;
    SessionFingerprint fingerprint;
};
SessionDatasetRef sessionDatasetRef(const QJsonObject& dataset, const QDir& sessionDir);

// Applies the stored view, filter, calculation flags and group switches of one dataset to `entry`.
// Missing keys and values of the wrong type take the defaults of a new dataset. An empty stored name
// leaves the entry's name alone. The compensation's channels and matrix are taken only when the
// compensation ran and both are stored, and the matrix only when it has channels² values.
void applySessionDataset(const QJsonObject& dataset, DatasetEntry* entry);

// The filter groups in stored order with their ids and rules. Groups with a negative id, or an id
// that an earlier group has, are dropped. `nextGroupId` gets the stored counter, raised above every
// id kept, so that new groups never take a restored id.
std::vector<FilterGroup> sessionFilterGroups(const QJsonObject& root, int* nextGroupId);

} // namespace Tessaly
