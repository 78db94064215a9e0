// Writes realistic example measurement files for demos, manual testing and benchmarks.
#include "DemoLookupTable.h"
#include "ExampleEvents.h"
#include "ExampleFileWriter.h"

#include <H5Cpp.h>
#include <QCommandLineParser>
#include <QCoreApplication>
#include <cstdio>

using namespace Tessaly::ExampleData;

namespace {

bool parseNumber(
    const QCommandLineParser& parser, const QString& name, double low, double high, double& value)
{
    if (!parser.isSet(name))
        return true;
    bool ok = false;
    const double parsed = parser.value(name).toDouble(&ok);
    if (!ok || parsed < low || parsed > high) {
        std::fprintf(stderr, "--%s must be a number from %g to %g\n", qPrintable(name), low, high);
        return false;
    }
    value = parsed;
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName("tessaly-example-data");
    H5::Exception::dontPrint();

    QCommandLineParser parser;
    parser.setApplicationDescription(
        "Writes an example measurement file: cells in noisy frames with masks, fluorescence traces, "
        "consistent scalar features and the metadata of an instrument run.");
    parser.addHelpOption();
    parser.addPositionalArgument("output", "The .vqd file to write (replaced if it exists).");
    parser.addOptions({
        { "events", "Number of events, 100 to 1000000 (default 5000).", "n" },
        { "images-up-to",
            "Write frames, masks and traces only if there are at most this many events "
            "(default 20000); above it only scalar features are written.",
            "n" },
        { "seed", "Random seed; the same seed gives the same file (default 1).", "n" },
        { "sample", "Sample name stored in the metadata.", "name" },
        { "flow-rate", "Flow rate in µL/s (default 0.06).", "value" },
        { "channel-width", "Channel width in µm (default 20).", "value" },
        { "deform-scale", "Factor on the cells' deformation; above 1 the cells are softer (default 1).",
            "value" },
        { "fluorescent-fraction", "Share of FL-1 positive cells, 0 to 1 (default 0.3).", "value" },
        { "compression", "none, deflate or zstd (default none).", "kind" },
        { "float32", "Store scalar features as 32-bit floats instead of 64-bit." },
        { "write-demo-table",
            "Write a demonstration Young's modulus table (a closed-form law, not a finite-element result) "
            "to this path, e.g. a folder's LUT_LE_2D_FEM.txt; the output file is then optional.",
            "path" },
    });
    parser.process(app);

    const QStringList positional = parser.positionalArguments();
    if (parser.isSet("write-demo-table")) {
        const std::string tablePath = parser.value("write-demo-table").toStdString();
        if (!writeDemoTable(tablePath))
            return 1;
        std::printf("Wrote the demonstration table to %s\n", tablePath.c_str());
        if (positional.isEmpty())
            return 0;
    }
    if (positional.size() != 1) {
        std::fprintf(stderr, "Give exactly one output file. See --help.\n");
        return 2;
    }

    ExampleSettings settings;
    double events = static_cast<double>(settings.eventCount);
    double imagesUpTo = 20000;
    double seed = 1;
    if (!parseNumber(parser, "events", 100, 1000000, events)
        || !parseNumber(parser, "images-up-to", 0, 1e7, imagesUpTo)
        || !parseNumber(parser, "seed", 0, 4e9, seed)
        || !parseNumber(parser, "flow-rate", 0.001, 10, settings.flowRate)
        || !parseNumber(parser, "channel-width", 5, 100, settings.channelWidth)
        || !parseNumber(parser, "deform-scale", 0.1, 5, settings.deformScale)
        || !parseNumber(parser, "fluorescent-fraction", 0, 1, settings.fluorescentFraction))
        return 2;
    settings.eventCount = static_cast<std::size_t>(events);
    settings.seed = static_cast<std::uint64_t>(seed);
    if (parser.isSet("sample"))
        settings.sample = parser.value("sample").toStdString();

    WriteOptions options;
    options.singlePrecision = parser.isSet("float32");
    options.images = options.traces = events <= imagesUpTo;
    const QString compression = parser.value("compression");
    if (compression == "deflate")
        options.compression = Compression::Deflate;
    else if (compression == "zstd")
        options.compression = Compression::Zstd;
    else if (!compression.isEmpty() && compression != "none") {
        std::fprintf(stderr, "--compression must be none, deflate or zstd\n");
        return 2;
    }

    const ExampleEvents generated = generateEvents(settings);
    const std::string path = positional.first().toStdString();
    if (!writeExampleFile(path, settings, generated, options))
        return 1;
    std::printf("Wrote %zu events to %s%s\n", settings.eventCount, path.c_str(),
        options.images ? "" : " (scalar features only)");
    return 0;
}
