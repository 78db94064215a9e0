#include "core/FeatureCatalogue.h"

#include <gtest/gtest.h>

using namespace Tessaly;

TEST(FeatureCatalogue, TablesHoldTheDocumentedRowCounts)
{
    EXPECT_EQ(featureInfoTable.size(), 78u);
    EXPECT_EQ(traceFeatureSuffixTable.size(), 10u);
    EXPECT_EQ(instrumentFeatureOverrides.size(), 4u);
}

TEST(FeatureCatalogue, LabelsCarryTheirUnitInBrackets)
{
    EXPECT_EQ(featureLabel("area_um", false), "Area [µm²]");
    EXPECT_EQ(featureLabel("deform", false), "Deformation");
    EXPECT_EQ(featureLabel("temp", true), "Chip temperature [°C]");
    EXPECT_EQ(featureLabel("fl2_max_ctc", false), "FL-2 maximum, crosstalk-corrected [a.u.]");
    EXPECT_EQ(featureLabel("fl3_npeaks", false), "FL-3 number of peaks");
}

TEST(FeatureCatalogue, InstrumentOverridesOnlyApplyToInstrumentFiles)
{
    EXPECT_EQ(featureLabel("userdef0", true), "Velocity [mm/s]");
    EXPECT_EQ(featureLabel("userdef0", false), "User-defined 0");
    EXPECT_EQ(featureLabel("userdef9", true), "Cell Type ID");
    EXPECT_EQ(featureLabel("userdef5", true), "User-defined 5");
    EXPECT_EQ(featureLabel("userdef5", false), "User-defined 5");
}

TEST(FeatureCatalogue, FluorescenceFamilyAcceptsAnyChannelAsWritten)
{
    EXPECT_EQ(featureLabel("fl7_width", false), "FL-7 width [µs]");
    EXPECT_EQ(featureLabel("fl01_max", false), "FL-01 maximum [a.u.]");
    EXPECT_EQ(featureLabel("fl12_pos_rf", false), "FL-12 position refined [µs]");
    // Not family keys: no digits, no underscore behind the digits, unknown suffix, too short.
    for (const char* key : { "fl_max", "fl1max", "fl1_foo", "fl1", "fl1_", "fl", "fl9_max_", "xfl1_max" })
        EXPECT_EQ(featureLabel(key, false), key) << key;
}

TEST(FeatureCatalogue, UnknownKeysAreTheirOwnLabelAndOnlyImageMaskContourAreNotScalar)
{
    EXPECT_EQ(featureLabel("my_feature", true), "my_feature");
    EXPECT_TRUE(isScalarFeature("my_feature"));
    EXPECT_EQ(featureLabel("image", false), "image");
    EXPECT_FALSE(isScalarFeature("image"));
    EXPECT_FALSE(isScalarFeature("mask"));
    EXPECT_FALSE(isScalarFeature("contour"));
    EXPECT_TRUE(isScalarFeature("trace"));
    EXPECT_TRUE(isScalarFeature("Image"));
}
