#include "calc/EModulus.h"

#include "calc/IsoelasticTracing.h"
#include "calc/Viscosity.h"
#include "io/VQDReader.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <limits>

namespace Tessaly {

const QString EModulus::lutFileName = QStringLiteral("LUT_LE_2D_FEM.txt");

namespace {

// The modulus levels of the isoelastic lines, in table units.
const std::vector<double> isoelasticLevels { 0.2, 0.3, 0.4, 0.5, 0.6, 0.7, 0.9, 1.2, 1.5, 2.0, 3.0 };

} // namespace

EModulus::EModulus(QObject* parent)
    : QObject(parent)
{
    // Without an application object (a tool, a test) the program's folder is unknown; the working
    // folder stands in for it.
    searchOrigin
        = QCoreApplication::instance() ? QCoreApplication::applicationDirPath() : QDir::currentPath();
    for (const char* suffix :
        { "/data/", "/../Resources/data/", "/../data/", "/../../data/", "/../../../data/" })
        folders << QDir::cleanPath(searchOrigin + QLatin1String(suffix));
    // A user who can't write to the installation keeps a table in their own data folder.
    folders << QDir::cleanPath(
        QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + QStringLiteral("/data/"));
}

QStringList EModulus::searchFolders() const
{
    std::lock_guard<std::mutex> lock(buildMutex);
    return folders;
}

QString EModulus::userTableFolder() const
{
    std::lock_guard<std::mutex> lock(buildMutex);
    return folders.isEmpty() ? QString() : folders.last();
}

void EModulus::setSearchFolders(const QStringList& searchFolders)
{
    std::lock_guard<std::mutex> lock(buildMutex);
    folders.clear();
    for (const QString& folder : searchFolders)
        folders << QDir::cleanPath(folder);
    searchOrigin = folders.isEmpty() ? QString() : folders.first();
}

QString EModulus::findLutFile() const
{
    std::lock_guard<std::mutex> lock(buildMutex);
    for (const QString& folder : folders) {
        const QString path = folder + QLatin1Char('/') + lutFileName;
        if (QFileInfo(path).isFile())
            return path;
    }
    return {};
}

void EModulus::loadLut(int lutId)
{
    std::lock_guard<std::mutex> lock(buildMutex);
    loadLutLocked(lutId);
}

void EModulus::loadLutLocked(int lutId)
{
    if (luts.count(lutId) || lutId != 0)
        return;
    QString path;
    for (const QString& folder : folders) {
        const QString candidate = folder + QLatin1Char('/') + lutFileName;
        if (QFileInfo(candidate).isFile()) {
            path = candidate;
            break;
        }
    }
    if (path.isEmpty()) {
        std::cerr << "EModulus: LUT file not found: " << lutFileName.toStdString() << " (searched from "
                  << searchOrigin.toStdString() << ")" << std::endl;
        return;
    }
    auto lut = std::make_unique<EModulusLut>();
    if (!readEModulusLut(path, *lut))
        return;
    luts[lutId] = std::move(lut);
}

void EModulus::triangulate(int lutId)
{
    std::lock_guard<std::mutex> lock(buildMutex);
    triangulateLocked(lutId);
}

void EModulus::triangulateLocked(int lutId)
{
    loadLutLocked(lutId);
    const auto table = luts.find(lutId);
    if (table == luts.end() || meshes.count(lutId))
        return;
    auto mesh = std::make_unique<EModulusMesh>();
    if (buildEModulusMesh(table->second->area, table->second->deform, table->second->emodulus, *mesh))
        meshes[lutId] = std::move(mesh);
}

const EModulusLut* EModulus::lut(int lutId) const
{
    std::lock_guard<std::mutex> lock(buildMutex);
    const auto it = luts.find(lutId);
    return it == luts.end() ? nullptr : it->second.get();
}

const EModulusMesh* EModulus::mesh(int lutId) const
{
    std::lock_guard<std::mutex> lock(buildMutex);
    const auto it = meshes.find(lutId);
    return it == meshes.end() ? nullptr : it->second.get();
}

const EModulusMesh* EModulus::meshFor(int lutId, const EModulusLut** table)
{
    std::lock_guard<std::mutex> lock(buildMutex);
    triangulateLocked(lutId);
    const auto mesh = meshes.find(lutId);
    if (mesh == meshes.end())
        return nullptr;
    *table = luts.at(lutId).get();
    return mesh->second.get();
}

double EModulus::interpolate(const EModulusMesh& mesh, double area, double deform)
{
    return Tessaly::interpolate(mesh, area, deform);
}

double EModulus::viscosity(const EModulusParams& params, double temperature)
{
    return mediumViscosity(params.viscosityModel, params.medium, temperature, params.channelWidth,
        params.flowRate, params.viscosity);
}

double EModulus::pixelationCorrected(double deform, double area, double pixelSize)
{
    return deform - pixelationCorrection(area, pixelSize);
}

bool EModulus::compute(VQDReader* reader, const EModulusParams& params)
{
    if (!reader || !reader->hasFeature("area_um") || !reader->hasFeature(params.deformFeature))
        return false;
    const EModulusLut* table = nullptr;
    const EModulusMesh* lutMesh = meshFor(params.lutId, &table);
    if (!lutMesh) {
        std::cerr << "EModulus: failed to build LUT triangulation" << std::endl;
        return false;
    }
    const std::vector<double>& area = reader->getFeature("area_um");
    const std::vector<double>& deform = reader->getFeature(params.deformFeature);
    const std::size_t count = area.size();
    if (count == 0 || deform.size() != count)
        return false;

    const std::vector<double>* temperatures = nullptr;
    if (params.temperatureSource == TemperatureEvent && reader->hasFeature("temp")) {
        const std::vector<double>& temp = reader->getFeature("temp");
        if (temp.size() == count)
            temperatures = &temp;
    }

    const double s = table->channelWidth / params.channelWidth;
    const double areaFactor = s * s;
    const double modulusFactor = s * s * s * params.flowRate / table->flowRate;
    double eta = viscosity(params, params.temperature);
    double etaTemperature = params.temperature;

    std::vector<double> result(count, std::numeric_limits<double>::quiet_NaN());
    for (std::size_t i = 0; i < count; ++i) {
        if (i % 256 == 0)
            emit progressChanged(
                static_cast<int>(static_cast<std::int64_t>(i) * 100 / static_cast<std::int64_t>(count)));
        double d = deform[i];
        if (params.pixelationCorrection)
            d = pixelationCorrected(d, area[i], params.pixelSize);
        const double e = Tessaly::interpolate(*lutMesh, area[i] * areaFactor, d);
        if (std::isnan(e))
            continue;
        if (temperatures && (*temperatures)[i] != etaTemperature) {
            etaTemperature = (*temperatures)[i];
            eta = viscosity(params, etaTemperature);
        }
        result[i] = eta / table->viscosity * e * modulusFactor;
    }
    emit progressChanged(100);
    reader->setFeature("emodulus", std::move(result));
    return true;
}

std::vector<IsoelasticLine> EModulus::isoelastics(const EModulusParams& params)
{
    // The lines always come from the program's own table, whichever table a computation used.
    const EModulusLut* table = nullptr;
    const EModulusMesh* lutMesh = meshFor(0, &table);
    if (!lutMesh)
        return {};
    const double s = table->channelWidth / params.channelWidth;
    IsoelasticScaling scaling;
    scaling.areaScale = s * s;
    scaling.modulusFactor = s * s * s * params.flowRate / table->flowRate
        * viscosity(params, params.temperature) / table->viscosity;
    scaling.pixelSize = params.pixelSize;
    return traceIsoelastics(*lutMesh, isoelasticLevels, scaling);
}

} // namespace Tessaly
