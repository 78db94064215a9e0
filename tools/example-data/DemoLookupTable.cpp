#include "DemoLookupTable.h"

#include <QSaveFile>
#include <QString>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

namespace Tessaly::ExampleData {

namespace {

constexpr double kPi = 3.14159265358979323846;

double sizeTerm(double area, double channelWidth)
{
    return 1.0 + 2.0 * std::sqrt(area / kPi) / channelWidth;
}

} // namespace

double demoDeformation(double area, double modulus, double viscosity, double flowRate, double channelWidth)
{
    const double stress = viscosity * flowRate / (channelWidth * channelWidth * channelWidth);
    return DemoLaw::coefficient * stress / modulus * sizeTerm(area, channelWidth);
}

double demoModulus(double area, double deformation, double viscosity, double flowRate, double channelWidth)
{
    if (!(deformation > 0.0))
        return std::numeric_limits<double>::quiet_NaN();
    const double stress = viscosity * flowRate / (channelWidth * channelWidth * channelWidth);
    return DemoLaw::coefficient * stress / deformation * sizeTerm(area, channelWidth);
}

std::vector<DemoTableRow> demoTableRows(int areaCount, int modulusCount)
{
    std::vector<DemoTableRow> rows;
    rows.reserve(static_cast<std::size_t>(areaCount * modulusCount));
    for (int i = 0; i < areaCount; ++i) {
        const double area = 5.0 + (450.0 - 5.0) * i / std::max(1, areaCount - 1);
        for (int j = 0; j < modulusCount; ++j) {
            const double modulus
                = 0.1 * std::pow(300.0, static_cast<double>(j) / std::max(1, modulusCount - 1));
            rows.push_back({ area,
                demoDeformation(area, modulus, DemoLaw::viscosity, DemoLaw::flowRate, DemoLaw::channelWidth),
                modulus });
        }
    }
    return rows;
}

std::string demoTableText(const std::vector<DemoTableRow>& rows)
{
    std::string text;
    text += "# Young's modulus look-up table written by tessaly-example-data --write-demo-table\n";
    text += "# BEGIN METADATA\n";
    text += "# {\n";
    text += "#   \"identifier\": \"Tessaly demonstration table\",\n";
    text += "#   \"note\": \"demonstration table, not a finite-element result\",\n";
    text += "#   \"law\": \"deform = 4.5 * sigma / E * (1 + 2 * sqrt(area / pi) / W), sigma = viscosity * "
            "flow_rate / W^3\",\n";
    text += "#   \"units\": \"area um^2, E kPa, W um, flow_rate uL/s, viscosity mPa s, sigma Pa\",\n";
    char line[256];
    std::snprintf(line, sizeof line,
        "#   \"channel_width\": %.1f,\n#   \"flow_rate\": %.2f,\n#   \"fluid_viscosity\": %.1f\n",
        DemoLaw::channelWidth, DemoLaw::flowRate, DemoLaw::viscosity);
    text += line;
    text += "# }\n";
    text += "# END METADATA\n";
    text += "area_um\tdeform\temodulus\n";
    for (const DemoTableRow& row : rows) {
        std::snprintf(line, sizeof line, "%.6f\t%.10g\t%.10g\n", row.area, row.deform, row.emodulus);
        text += line;
    }
    return text;
}

bool writeDemoTable(const std::string& path, const std::vector<DemoTableRow>& rows)
{
    QSaveFile file(QString::fromStdString(path));
    const std::string text = demoTableText(rows);
    if (!file.open(QIODevice::WriteOnly)
        || file.write(text.data(), static_cast<qint64>(text.size())) != static_cast<qint64>(text.size())
        || !file.commit()) {
        std::fprintf(stderr, "Cannot write %s: %s\n", path.c_str(), qPrintable(file.errorString()));
        return false;
    }
    return true;
}

} // namespace Tessaly::ExampleData
