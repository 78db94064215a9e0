#pragma once

#include "calc/EModulusLut.h"
#include "calc/EModulusMesh.h"
#include "calc/EModulusParams.h"
#include "calc/IsoelasticLine.h"

#include <QObject>
#include <QStringList>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace Tessaly {

class VQDReader;

// Young's modulus from projected area and deformation, by interpolation in a finite-element look-up
// table after the event has been rescaled to the channel, flow and viscosity the table was computed
// for. Tables and their triangulations are built on first use and kept for the life of the object;
// a table that isn't found is sought again at every use, so one put in place later is picked up.
//
// Table number 0 is the file "LUT_LE_2D_FEM.txt", sought in the folders of searchFolders() in order.
// Other numbers name no file.
class EModulus : public QObject
{
    Q_OBJECT

public:
    static const QString lutFileName;

    explicit EModulus(QObject* parent = nullptr);

    // Reads the table of that number unless it has been read.
    void loadLut(int lutId);
    // Reads the table if need be and triangulates it unless done; a table of fewer than 3 rows stays
    // without mesh.
    void triangulate(int lutId);

    // The table and mesh of a number, null while absent. They never change once there.
    const EModulusLut* lut(int lutId) const;
    const EModulusMesh* mesh(int lutId) const;

    static double interpolate(const EModulusMesh& mesh, double area, double deform);
    // Viscosity (mPa·s) of the medium of `params` at `temperature` °C.
    static double viscosity(const EModulusParams& params, double temperature);
    static double pixelationCorrected(double deform, double area, double pixelSize);

    // Adds the feature "emodulus" to the reader: for every event the table's modulus at its area and
    // (corrected) deformation, carried over to the measurement's channel, flow and viscosity. Events
    // outside the table are NaN. False, with nothing stored, without a reader, its two features, events
    // or a table. Reports progress as it goes; may run on any thread.
    bool compute(VQDReader* reader, const EModulusParams& params);

    // Lines of equal modulus of table 0 at the conditions of `params`, in measured area and
    // deformation; empty without a table.
    std::vector<IsoelasticLine> isoelastics(const EModulusParams& params);

    // Where table 0 is sought, in order: "data" folders beside and above the executable, then the
    // user's own data folder, which is the last entry and where a table chosen by the user goes.
    QStringList searchFolders() const;
    QString userTableFolder() const;
    // Replaces the folders searched (the last one is the user's); for installations and tests.
    void setSearchFolders(const QStringList& folders);
    // The table file that would be read now, or an empty text.
    QString findLutFile() const;

Q_SIGNALS:
    void progressChanged(int percent);

private:
    void loadLutLocked(int lutId);
    void triangulateLocked(int lutId);
    const EModulusMesh* meshFor(int lutId, const EModulusLut** lut);

    std::map<int, std::unique_ptr<EModulusLut>> luts;
    std::map<int, std::unique_ptr<EModulusMesh>> meshes;
    QStringList folders;
    QString searchOrigin;
    // Tables are built on whichever thread needs them first: a calculation on the pool and the plot's
    // isoelastic lines on the interface thread may ask at the same time.
    mutable std::mutex buildMutex;
};

} // namespace Tessaly
