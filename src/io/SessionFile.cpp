#include "io/SessionFile.h"

#include "io/FilterRuleJson.h"
#include "io/Hdf5Mutex.h"
#include "io/VQDReader.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QJsonValue>
#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>
#include <set>

namespace Tessaly {

namespace {

namespace Keys {
const QString version = QStringLiteral("version");
const QString savedAt = QStringLiteral("savedAt");
const QString mainWindow = QStringLiteral("mainWindow");
const QString datasets = QStringLiteral("datasets");
const QString filterGroups = QStringLiteral("filterGroups");
const QString nextGroupId = QStringLiteral("nextGroupId");
const QString combineWindows = QStringLiteral("combineWindows");
const QString statEvalWindows = QStringLiteral("statEvalWindows");

const QString activeDatasetIndex = QStringLiteral("activeDatasetIndex");
const QString colorMapIndex = QStringLiteral("colorMapIndex");
const QString expertMode = QStringLiteral("expertMode");

const QString id = QStringLiteral("id");
const QString name = QStringLiteral("name");
const QString rules = QStringLiteral("rules");

const QString filePath = QStringLiteral("filePath");
const QString displayName = QStringLiteral("displayName");
const QString xFeatureName = QStringLiteral("xFeatureName");
const QString yFeatureName = QStringLiteral("yFeatureName");
const QString colorFeatureName = QStringLiteral("colorFeatureName");
const QString currentEventIndex = QStringLiteral("currentEventIndex");
const QString contourMode = QStringLiteral("contourMode");
const QString contourFraction1 = QStringLiteral("contourFraction1");
const QString contourFraction2 = QStringLiteral("contourFraction2");
const QString scaleXMode = QStringLiteral("scaleXMode");
const QString scaleYMode = QStringLiteral("scaleYMode");
const QString flRefinementApplied = QStringLiteral("flRefinementApplied");
const QString ctcApplied = QStringLiteral("ctcApplied");
const QString emodApplied = QStringLiteral("emodApplied");
const QString ctcChannels = QStringLiteral("ctcChannels");
const QString spilloverMatrix = QStringLiteral("spilloverMatrix");
const QString isDuplicate = QStringLiteral("isDuplicate");
const QString duplicateOfIndex = QStringLiteral("duplicateOfIndex");
const QString fingerprint = QStringLiteral("fingerprint");
const QString filter = QStringLiteral("filter");
const QString groupEnabled = QStringLiteral("groupEnabled");

const QString fileSize = QStringLiteral("fileSize");
const QString eventCount = QStringLiteral("eventCount");
const QString featureHash = QStringLiteral("featureHash");

const QString enabled = QStringLiteral("enabled");
const QString combineMode = QStringLiteral("combineMode");
const QString groupId = QStringLiteral("groupId");
} // namespace Keys

const QString andMode = QStringLiteral("AND");
const QString notMode = QStringLiteral("NOT");

std::string stringOf(const QJsonObject& object, const QString& key)
{
    return object.value(key).toString().toStdString();
}

// Whole numbers only: 1.5 or "3" read as the default, like any other value of the wrong type.
qint64 integerOf(const QJsonObject& object, const QString& key, qint64 fallback)
{
    const QJsonValue value = object.value(key);
    if (!value.isDouble())
        return fallback;
    const double number = value.toDouble();
    if (number != std::floor(number) || std::abs(number) > 9007199254740992.0)
        return fallback;
    return static_cast<qint64>(number);
}

int intOf(const QJsonObject& object, const QString& key, int fallback)
{
    const qint64 value = integerOf(object, key, fallback);
    if (value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max())
        return fallback;
    return static_cast<int>(value);
}

QJsonObject filterToJson(const EventFilter& filter)
{
    QJsonArray rules;
    for (const FilterRule& rule : filter.rules())
        rules.append(filterRuleToJson(rule));
    QJsonObject object;
    object.insert(Keys::enabled, filter.isEnabled());
    object.insert(Keys::combineMode, filter.combineMode() == ShowPassingEvents ? andMode : notMode);
    object.insert(Keys::rules, rules);
    return object;
}

EventFilter filterFromJson(const QJsonObject& object)
{
    EventFilter filter;
    filter.setEnabled(object.value(Keys::enabled).toBool(false));
    filter.setCombineMode(
        object.value(Keys::combineMode).toString() == notMode ? ShowExcludedEvents : ShowPassingEvents);
    const QJsonArray rules = object.value(Keys::rules).toArray();
    for (const QJsonValue& rule : rules) {
        if (rule.isObject())
            filter.addRule(filterRuleFromJson(rule.toObject()));
    }
    return filter;
}

QJsonObject fingerprintToJson(const SessionFingerprint& fingerprint)
{
    QJsonObject object;
    object.insert(Keys::fileSize, static_cast<double>(fingerprint.fileSize));
    object.insert(Keys::eventCount, static_cast<double>(fingerprint.eventCount));
    object.insert(Keys::featureHash, fingerprint.featureHash);
    return object;
}

SessionFingerprint fingerprintFromJson(const QJsonObject& object)
{
    SessionFingerprint fingerprint;
    fingerprint.fileSize = integerOf(object, Keys::fileSize, -1);
    fingerprint.eventCount = integerOf(object, Keys::eventCount, -1);
    fingerprint.featureHash = object.value(Keys::featureHash).toString();
    return fingerprint;
}

QJsonObject datasetToJson(const DatasetEntry& entry, const QDir& sessionDir, int duplicateOf)
{
    const QString path = QString::fromStdString(entry.filePath);
    const bool compensated = entry.ctcApplied;
    QJsonArray channels;
    QJsonArray matrix;
    if (compensated) {
        for (int channel : entry.ctcChannels)
            channels.append(channel);
        for (const std::vector<double>& row : entry.spilloverMatrix) {
            for (double value : row)
                matrix.append(value);
        }
    }
    QJsonArray groups;
    for (auto it = entry.groupEnabled.cbegin(); it != entry.groupEnabled.cend(); ++it)
        groups.append(QJsonObject { { Keys::groupId, it.key() }, { Keys::enabled, it.value() } });

    QJsonObject object;
    object.insert(Keys::filePath, sessionDir.relativeFilePath(QFileInfo(path).absoluteFilePath()));
    object.insert(Keys::displayName, entry.displayName);
    object.insert(Keys::xFeatureName, QString::fromStdString(entry.xFeatureName));
    object.insert(Keys::yFeatureName, QString::fromStdString(entry.yFeatureName));
    object.insert(Keys::colorFeatureName, QString::fromStdString(entry.colorFeatureName));
    object.insert(Keys::currentEventIndex, entry.currentEventIndex);
    object.insert(Keys::contourMode, entry.contourMode);
    object.insert(Keys::contourFraction1, entry.contourFraction1);
    object.insert(Keys::contourFraction2, entry.contourFraction2);
    object.insert(Keys::scaleXMode, entry.scaleXMode);
    object.insert(Keys::scaleYMode, entry.scaleYMode);
    object.insert(Keys::flRefinementApplied, entry.flRefinementApplied);
    object.insert(Keys::ctcApplied, entry.ctcApplied);
    object.insert(Keys::emodApplied, entry.emodApplied);
    object.insert(Keys::ctcChannels, channels);
    object.insert(Keys::spilloverMatrix, matrix);
    object.insert(Keys::isDuplicate, duplicateOf >= 0);
    object.insert(Keys::duplicateOfIndex, duplicateOf);
    object.insert(Keys::fingerprint,
        fingerprintToJson(entry.reader ? fingerprintOf(*entry.reader, path) : SessionFingerprint()));
    object.insert(Keys::filter, filterToJson(entry.filter));
    object.insert(Keys::groupEnabled, groups);
    return object;
}

} // namespace

QString featureHash(std::vector<std::string> names)
{
    std::sort(names.begin(), names.end());
    QCryptographicHash hash(QCryptographicHash::Sha256);
    for (const std::string& name : names)
        hash.addData(name.data(), static_cast<int>(name.size()));
    return QString::fromLatin1(hash.result().toHex()).left(12);
}

SessionFingerprint fingerprintOf(VQDReader& reader, const QString& path)
{
    SessionFingerprint fingerprint;
    const QFileInfo info(path);
    fingerprint.fileSize = info.exists() ? info.size() : -1;
    fingerprint.eventCount = static_cast<qint64>(reader.eventCount());
    // A calculation may add a feature on its own thread; it does so under the library's lock.
    std::vector<std::string> names;
    {
        const std::lock_guard<std::recursive_mutex> lock(hdf5Mutex());
        names = reader.featureNames();
    }
    fingerprint.featureHash = featureHash(std::move(names));
    return fingerprint;
}

QByteArray writeSessionDocument(
    const SessionSnapshot& snapshot, const QString& sessionFilePath, const QDateTime& savedAt)
{
    const QDir sessionDir = QFileInfo(sessionFilePath).absoluteDir();
    QJsonArray datasets;
    for (std::size_t i = 0; i < snapshot.datasets.size(); ++i) {
        const DatasetEntry* entry = snapshot.datasets[i];
        // A duplicate shares its reader with the first earlier entry that has it.
        int duplicateOf = -1;
        for (std::size_t j = 0; j < i && entry->reader; ++j) {
            if (snapshot.datasets[j]->reader == entry->reader) {
                duplicateOf = static_cast<int>(j);
                break;
            }
        }
        datasets.append(datasetToJson(*entry, sessionDir, duplicateOf));
    }
    QJsonArray groups;
    for (const FilterGroup* group : snapshot.groups) {
        QJsonArray rules;
        for (const FilterRule& rule : group->rules)
            rules.append(filterRuleToJson(rule));
        groups.append(QJsonObject { { Keys::id, group->id },
            { Keys::name, QString::fromStdString(group->name) }, { Keys::rules, rules } });
    }
    QJsonObject mainWindow;
    mainWindow.insert(Keys::activeDatasetIndex, snapshot.activeDatasetIndex);
    mainWindow.insert(Keys::colorMapIndex, snapshot.colorMapIndex);
    // There is no expert mode; the key is kept so that every session has the same shape.
    mainWindow.insert(Keys::expertMode, false);

    QJsonObject root;
    root.insert(Keys::version, sessionFileVersion);
    root.insert(Keys::savedAt, savedAt.toUTC().toString(Qt::ISODate));
    root.insert(Keys::mainWindow, mainWindow);
    root.insert(Keys::datasets, datasets);
    root.insert(Keys::filterGroups, groups);
    root.insert(Keys::nextGroupId, snapshot.nextGroupId);
    root.insert(Keys::combineWindows, QJsonArray());
    root.insert(Keys::statEvalWindows, QJsonArray());
    return QJsonDocument(root).toJson(QJsonDocument::Indented);
}

SessionParseResult parseSessionDocument(
    const QByteArray& bytes, QJsonObject* root, int* version, QString* error)
{
    QJsonParseError parseError {};
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &parseError);
    if (document.isNull()) {
        *error = parseError.errorString();
        return SessionParseResult::Invalid;
    }
    const QJsonObject object = document.object();
    const int found = intOf(object, Keys::version, 0);
    if (!document.isObject() || found < 1)
        return SessionParseResult::Unrecognized;
    *root = object;
    *version = found;
    return SessionParseResult::Ok;
}

SessionMainWindowState sessionMainWindowState(const QJsonObject& root)
{
    const QJsonObject object = root.value(Keys::mainWindow).toObject();
    SessionMainWindowState state;
    state.activeDatasetIndex = intOf(object, Keys::activeDatasetIndex, 0);
    state.colorMapIndex = intOf(object, Keys::colorMapIndex, 0);
    state.expertMode = object.value(Keys::expertMode).toBool(false);
    return state;
}

std::vector<QJsonObject> sessionDatasets(const QJsonObject& root)
{
    std::vector<QJsonObject> datasets;
    const QJsonArray array = root.value(Keys::datasets).toArray();
    datasets.reserve(static_cast<std::size_t>(array.size()));
    for (const QJsonValue& value : array)
        datasets.push_back(value.toObject());
    return datasets;
}

SessionDatasetRef sessionDatasetRef(const QJsonObject& dataset, const QDir& sessionDir)
{
    SessionDatasetRef ref;
    const QString stored = dataset.value(Keys::filePath).toString();
    ref.filePath = QDir::cleanPath(sessionDir.absoluteFilePath(stored));
    ref.displayName = dataset.value(Keys::displayName).toString();
    ref.isDuplicate = dataset.value(Keys::isDuplicate).toBool(false);
    ref.duplicateOfIndex = intOf(dataset, Keys::duplicateOfIndex, -1);
    ref.fingerprint = fingerprintFromJson(dataset.value(Keys::fingerprint).toObject());
    return ref;
}

void applySessionDataset(const QJsonObject& dataset, DatasetEntry* entry)
{
    const QString name = dataset.value(Keys::displayName).toString();
    if (!name.isEmpty())
        entry->displayName = name;
    entry->xFeatureName = stringOf(dataset, Keys::xFeatureName);
    entry->yFeatureName = stringOf(dataset, Keys::yFeatureName);
    entry->colorFeatureName = stringOf(dataset, Keys::colorFeatureName);
    entry->currentEventIndex = intOf(dataset, Keys::currentEventIndex, -1);
    entry->contourMode = intOf(dataset, Keys::contourMode, 0);
    entry->contourFraction1 = dataset.value(Keys::contourFraction1).toDouble(0.1);
    entry->contourFraction2 = dataset.value(Keys::contourFraction2).toDouble(0.67);
    entry->scaleXMode = intOf(dataset, Keys::scaleXMode, 0);
    entry->scaleYMode = intOf(dataset, Keys::scaleYMode, 0);
    entry->flRefinementApplied = dataset.value(Keys::flRefinementApplied).toBool(false);
    entry->ctcApplied = dataset.value(Keys::ctcApplied).toBool(false);
    entry->emodApplied = dataset.value(Keys::emodApplied).toBool(false);

    entry->ctcChannels.clear();
    entry->spilloverMatrix.clear();
    const QJsonValue channelsValue = dataset.value(Keys::ctcChannels);
    const QJsonValue matrixValue = dataset.value(Keys::spilloverMatrix);
    if (entry->ctcApplied && channelsValue.isArray() && matrixValue.isArray()) {
        for (const QJsonValue& channel : channelsValue.toArray())
            entry->ctcChannels.push_back(channel.toInt(0));
        const QJsonArray values = matrixValue.toArray();
        const std::size_t n = entry->ctcChannels.size();
        if (static_cast<std::size_t>(values.size()) == n * n) {
            entry->spilloverMatrix.assign(n, std::vector<double>(n, 0.0));
            for (std::size_t i = 0; i < n * n; ++i)
                entry->spilloverMatrix[i / n][i % n] = values.at(static_cast<int>(i)).toDouble(0.0);
        }
    }

    entry->filter = filterFromJson(dataset.value(Keys::filter).toObject());
    entry->groupEnabled.clear();
    for (const QJsonValue& value : dataset.value(Keys::groupEnabled).toArray()) {
        const QJsonObject group = value.toObject();
        entry->groupEnabled.insert(intOf(group, Keys::groupId, 0), group.value(Keys::enabled).toBool(false));
    }
}

std::vector<FilterGroup> sessionFilterGroups(const QJsonObject& root, int* nextGroupId)
{
    *nextGroupId = std::max(0, intOf(root, Keys::nextGroupId, 0));
    std::vector<FilterGroup> groups;
    std::set<int> ids;
    for (const QJsonValue& value : root.value(Keys::filterGroups).toArray()) {
        const QJsonObject object = value.toObject();
        FilterGroup group;
        group.id = intOf(object, Keys::id, -1);
        if (group.id < 0 || !ids.insert(group.id).second)
            continue;
        group.name = stringOf(object, Keys::name);
        for (const QJsonValue& rule : object.value(Keys::rules).toArray()) {
            if (rule.isObject())
                group.rules.push_back(filterRuleFromJson(rule.toObject()));
        }
        *nextGroupId = std::max(*nextGroupId, group.id + 1);
        groups.push_back(std::move(group));
    }
    return groups;
}

} // namespace Tessaly
