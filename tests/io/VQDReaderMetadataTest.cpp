#include "IoTestBase.h"
#include "io/VQDReader.h"

using namespace Tessaly;
using namespace Tessaly::Testing;
using testing::ElementsAre;
using testing::Pair;

namespace {

class VQDReaderMetadata : public IoTest
{
protected:
    // Writes a file with the attributes set by `write`, opens it and reads its metadata.
    template <typename Write> VQDMetadata metadataOf(Write write, VQDReader& reader)
    {
        const std::string path = pathFor("metadata" + std::to_string(++m_files) + ".vqd");
        {
            FixtureWriter writer(path);
            writer.column<float>("userdef0", { 1, 2 });
            write(writer);
        }
        EXPECT_TRUE(reader.open(path));
        return reader.readMetadata();
    }

    template <typename Write> VQDMetadata metadataOf(Write write)
    {
        VQDReader reader;
        return metadataOf(write, reader);
    }

    int m_files = 0;
};

} // namespace

TEST_F(VQDReaderMetadata, AttributesGoToTheirSectionAndAllToAllAttributes)
{
    const VQDMetadata metadata = metadataOf([](FixtureWriter& w) {
        w.stringAttribute("experiment:sample", "blood")
            .stringAttribute("setup:channel width", "20")
            .stringAttribute("imaging:roi size x", "250")
            .stringAttribute("online_contour:bin area min", "10")
            .stringAttribute("online_filter:area_um min", "0")
            .stringAttribute("offline_filter:deform max", "0.2")
            .stringAttribute("fluorescence:laser 1 power", "5")
            .stringAttribute("export:software", "x")
            .stringAttribute("custom:thing", "only in all")
            .stringAttribute("version", "no section")
            .stringAttribute("setup:a:b", "first colon splits");
    });
    EXPECT_THAT(metadata.experiment, ElementsAre(Pair("sample", "blood")));
    EXPECT_THAT(metadata.setup, ElementsAre(Pair("a:b", "first colon splits"), Pair("channel width", "20")));
    EXPECT_THAT(metadata.imaging, ElementsAre(Pair("roi size x", "250")));
    EXPECT_THAT(metadata.online_contour, ElementsAre(Pair("bin area min", "10")));
    EXPECT_THAT(metadata.online_filter, ElementsAre(Pair("area_um min", "0")));
    EXPECT_THAT(metadata.offline_filter, ElementsAre(Pair("deform max", "0.2")));
    EXPECT_THAT(metadata.fluorescence, ElementsAre(Pair("laser 1 power", "5")));
    EXPECT_THAT(metadata.export_, ElementsAre(Pair("software", "x")));
    EXPECT_EQ(metadata.allAttributes.size(), 11u);
    EXPECT_EQ(metadata.allAttributes.at("custom:thing"), "only in all");
    EXPECT_EQ(metadata.allAttributes.at("version"), "no section");
    EXPECT_EQ(metadata.allAttributes.at("setup:a:b"), "first colon splits");
    EXPECT_EQ(metadata.allAttributes.at("experiment:sample"), "blood");
    EXPECT_TRUE(metadata.polygonFilters.empty());
}

TEST_F(VQDReaderMetadata, TextReadsWithoutItsPaddingWhateverItsStorage)
{
    const VQDMetadata metadata = metadataOf([](FixtureWriter& w) {
        w.stringAttribute("experiment:variable", "Blood  donor ")
            .stringAttribute("experiment:empty", "")
            .stringAttribute("experiment:terminated", "2024-05-01", StringStorage::NullTerminated, 16)
            .stringAttribute("experiment:nullpadded", "12:30", StringStorage::NullPadded, 16)
            .stringAttribute("experiment:exact", "exact", StringStorage::NullPadded)
            .stringAttribute("experiment:spacepadded", "a b", StringStorage::SpacePadded, 16);
    });
    EXPECT_EQ(metadata.experiment.at("variable"), "Blood  donor ");
    EXPECT_EQ(metadata.experiment.at("empty"), "");
    EXPECT_EQ(metadata.experiment.at("terminated"), "2024-05-01");
    EXPECT_EQ(metadata.experiment.at("nullpadded"), "12:30");
    EXPECT_EQ(metadata.experiment.at("exact"), "exact");
    EXPECT_EQ(metadata.experiment.at("spacepadded"), "a b");
}

TEST_F(VQDReaderMetadata, NumbersBecomeDecimalText)
{
    const VQDMetadata metadata = metadataOf([](FixtureWriter& w) {
        w.floatAttribute("imaging:pixel size", 0.1, 4)
            .floatAttribute("setup:flow rate", 1.5)
            .floatAttribute("setup:offset", -2.25)
            .floatAttribute("setup:tiny", 0.0000004)
            .floatAttribute("setup:large", 12345678.9)
            .intAttribute("imaging:frame rate", 2000, 4)
            .intAttribute("imaging:negative", -5, 1)
            .intAttribute("imaging:unsigned", 65535, 2, false)
            .intAttribute("imaging:wide", -9000000000)
            .enumAttribute("online_filter:enabled", 1)
            .enumAttribute("online_filter:disabled", 0)
            .enumAttribute("online_filter:other", -3);
    });
    EXPECT_EQ(metadata.imaging.at("pixel size"), "0.100000");
    EXPECT_EQ(metadata.setup.at("flow rate"), "1.500000");
    EXPECT_EQ(metadata.setup.at("offset"), "-2.250000");
    EXPECT_EQ(metadata.setup.at("tiny"), "0.000000");
    EXPECT_EQ(metadata.setup.at("large"), "12345678.900000");
    EXPECT_EQ(metadata.imaging.at("frame rate"), "2000");
    EXPECT_EQ(metadata.imaging.at("negative"), "-5");
    EXPECT_EQ(metadata.imaging.at("unsigned"), "65535");
    EXPECT_EQ(metadata.imaging.at("wide"), "-9000000000");
    EXPECT_EQ(metadata.online_filter.at("enabled"), "1");
    EXPECT_EQ(metadata.online_filter.at("disabled"), "0");
    EXPECT_EQ(metadata.online_filter.at("other"), "-3");
}

TEST_F(VQDReaderMetadata, PolygonPointsBecomeGatesWhenTheNameNamesTwoFeatures)
{
    const VQDMetadata metadata = metadataOf([](FixtureWriter& w) {
        w.pointsAttribute("online_filter:area_um,deform polygon points",
             { { 10, 0.01f }, { 20, 0.05f }, { 30.5f, 0.02f } })
            .pointsAttribute("online_filter:area_um polygon points", { { 1, 2 } })
            .pointsAttribute("offline_filter:bright_avg,fl1_max polygon points", { { -1, 2 }, { 3, -4 } })
            .pointsAttribute("setup: polygon points", { { 1, 2 } })
            .pointsAttribute("setup:calibration", { { 0.5f, 0.25f } })
            .pointsAttribute("no section polygon points", { { 1, 2 } });
    });

    ASSERT_EQ(metadata.polygonFilters.size(), 2u);
    const PolygonFilterDef& online = metadata.polygonFilters[0];
    EXPECT_EQ(online.xFeature, "area_um");
    EXPECT_EQ(online.yFeature, "deform");
    EXPECT_THAT(online.vertices,
        ElementsAre(Pair(10.0, static_cast<double>(0.01f)), Pair(20.0, static_cast<double>(0.05f)),
            Pair(30.5, static_cast<double>(0.02f))));
    EXPECT_EQ(metadata.online_filter.at("area_um,deform polygon points"),
        "(10.000000,0.010000), (20.000000,0.050000), (30.500000,0.020000)");
    const PolygonFilterDef& offline = metadata.polygonFilters[1];
    EXPECT_EQ(offline.xFeature, "bright_avg");
    EXPECT_EQ(offline.yFeature, "fl1_max");
    EXPECT_THAT(offline.vertices, ElementsAre(Pair(-1.0, 2.0), Pair(3.0, -4.0)));

    // Without a comma, with nothing before the suffix, or under another key: text only, no gate.
    EXPECT_EQ(metadata.online_filter.at("area_um polygon points"), "(1.000000,2.000000)");
    EXPECT_EQ(metadata.setup.at(" polygon points"), "(1.000000,2.000000)");
    EXPECT_EQ(metadata.setup.at("calibration"), "(0.500000,0.250000)");
    // Point arrays without a section are dropped.
    EXPECT_EQ(metadata.allAttributes.count("no section polygon points"), 0u);
}

TEST_F(VQDReaderMetadata, OtherArraysAndTypesAreDropped)
{
    const VQDMetadata metadata = metadataOf([](FixtureWriter& w) {
        const std::vector<std::int32_t> ints { 1, 2, 3, 4 };
        const std::vector<float> floats { 1, 2, 3, 4, 5, 6, 7, 8, 9 };
        const auto& intType = H5::PredType::NATIVE_INT32;
        const auto& floatType = H5::PredType::NATIVE_FLOAT;
        w.attribute("setup:ints", intType, intType, { 4 }, ints.data())
            .attribute("setup:int pairs", intType, intType, { 2, 2 }, ints.data())
            .attribute("setup:floats", floatType, floatType, { 4 }, floats.data())
            .attribute("setup:triples", floatType, floatType, { 3, 3 }, floats.data())
            .attribute("setup:cube", floatType, floatType, { 2, 2, 2 }, floats.data());
        const char* texts[] = { "a", "b" };
        const H5::StrType textType(H5::PredType::C_S1, H5T_VARIABLE);
        w.attribute("setup:texts", textType, textType, { 2 }, texts);
        H5::CompType pair(2 * sizeof(float));
        pair.insertMember("x", 0, floatType);
        pair.insertMember("y", sizeof(float), floatType);
        w.attribute("setup:compound", pair, pair, {}, floats.data());
        const unsigned char bits = 5;
        w.attribute("setup:bits", H5::PredType::NATIVE_B8, H5::PredType::NATIVE_B8, {}, &bits);
        w.stringAttribute("setup:kept", "yes");
    });
    EXPECT_THAT(metadata.setup, ElementsAre(Pair("kept", "yes")));
    EXPECT_EQ(metadata.allAttributes.size(), 1u);
}

TEST_F(VQDReaderMetadata, InstrumentFilesAreRecognisedByModuleCompositionAndRelabelUserColumns)
{
    struct Case
    {
        std::string name;
        std::string value;
        bool instrument;
    };
    const std::vector<Case> cases {
        { "setup:module composition", "Cell_Flow_2, Vortiq, Fluor", true },
        { "setup:module composition", "Vortiq", true },
        { "setup:module composition", "vortiq", false },
        { "setup:module composition", "VORTIQ", false },
        { "experiment:module composition", "Vortiq", false },
        { "setup:module", "Vortiq", false },
    };
    for (const Case& c : cases) {
        VQDReader reader;
        metadataOf([&](FixtureWriter& w) { w.stringAttribute(c.name, c.value); }, reader);
        EXPECT_EQ(reader.isInstrumentData(), c.instrument) << c.name << " = " << c.value;
        EXPECT_EQ(reader.featureLabel("userdef0"), c.instrument ? "Velocity [mm/s]" : "User-defined 0")
            << c.value;
        EXPECT_EQ(reader.featureLabel("userdef5"), "User-defined 5");
        EXPECT_EQ(reader.featureLabel("deform"), "Deformation");
    }

    // Space-padded text, as other software writes it, is recognised too.
    VQDReader padded;
    metadataOf(
        [](FixtureWriter& w) {
            w.stringAttribute("setup:module composition", "Vortiq", StringStorage::SpacePadded, 32);
        },
        padded);
    EXPECT_TRUE(padded.isInstrumentData());
}

TEST_F(VQDReaderMetadata, LabelsUseTheInstrumentTableOnlyAfterTheTest)
{
    VQDReader reader;
    const std::string path = pathFor("instrument.vqd");
    FixtureWriter(path)
        .column<float>("userdef0", { 1 })
        .stringAttribute("setup:module composition", "Vortiq");
    ASSERT_TRUE(reader.open(path));
    EXPECT_EQ(reader.featureLabel("userdef0"), "User-defined 0");
    reader.readMetadata();
    EXPECT_EQ(reader.featureLabel("userdef0"), "Velocity [mm/s]");
    EXPECT_EQ(reader.featureLabel("userdef9"), "Cell Type ID");
    EXPECT_EQ(reader.featureLabel("my_feature"), "my_feature");
}
