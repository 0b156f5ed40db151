// Names, labels and value texts of the 21 host parameters, with the fine and
// detail switches.
#include <gtest/gtest.h>

#include "plugin/ParameterText.h"

using ParameterText::display;

TEST(ParameterText, NamesAndLabelsOfTheTable) {
    EXPECT_STREQ(ParameterText::name(0), "ModWheel");
    EXPECT_STREQ(ParameterText::name(1), "Rotation");
    EXPECT_STREQ(ParameterText::name(6), "WheelScale");
    EXPECT_STREQ(ParameterText::name(8), "Volume");
    EXPECT_STREQ(ParameterText::name(9), "Branch1");
    EXPECT_STREQ(ParameterText::name(20), "Branch12");
    EXPECT_STREQ(ParameterText::name(21), "");
    EXPECT_STREQ(ParameterText::label(0), "%");
    EXPECT_STREQ(ParameterText::label(1), "degrees");
    EXPECT_STREQ(ParameterText::label(2), "");
    EXPECT_STREQ(ParameterText::label(5), "");
    EXPECT_STREQ(ParameterText::label(8), "dB");
    EXPECT_STREQ(ParameterText::label(20), "%");
}

TEST(ParameterText, VolumeZeroShowsMinusInfinity) {
    EXPECT_EQ(display(8, 0.0f), "-inf");
    EXPECT_EQ(display(8, 0.000009f), "-inf");
}

TEST(ParameterText, VolumeHalfIsZeroDecibelsAndFullIsTwenty) {
    EXPECT_EQ(display(8, 0.5f), "0.00");
    EXPECT_EQ(display(8, 1.0f), "20.00");
    EXPECT_EQ(display(8, 0.25f), "-20.00");
    EXPECT_EQ(display(8, 1.0f, true), "20.00000000");
}

TEST(ParameterText, TuningCentreShowsZeroCents) { EXPECT_EQ(display(2, 0.5f), "+0 ct"); }

TEST(ParameterText, TuningOneSemitoneUpShowsSemitones) {
    EXPECT_EQ(display(2, 0.5f + 1.0f / 24.0f), "+1.00 sm");
    EXPECT_EQ(display(2, 0.0f), "-12.00 sm");
    EXPECT_EQ(display(2, 0.5f + 0.5f / 24.0f), "+50 ct");
    EXPECT_EQ(display(2, 0.5f, true), "+0.00000000 ct");
}

TEST(ParameterText, ReleaseQuarterShowsMillisecondsAndNoGating) {
    EXPECT_EQ(display(5, 0.25f), "223.61 ms");
    EXPECT_EQ(display(5, 0.25f, false, true), "223.61 ms");
    EXPECT_EQ(display(5, 0.25f, true), "223.60679775 ms");
}

TEST(ParameterText, ReleaseLowShowsGatingWithDetail) {
    EXPECT_EQ(display(5, 0.0f), "50.00 ms");
    EXPECT_EQ(display(5, 0.0f, false, true), "50.00 ms (100% gating)");
    EXPECT_EQ(display(5, 0.125f, false, true), "105.74 ms (50% gating)");
    EXPECT_EQ(display(5, 0.125f, true, true), "105.73712634 ms (50.00000000% gating)");
}

TEST(ParameterText, ReleaseLongShowsSeconds) {
    EXPECT_EQ(display(5, 1.0f), "20.00 s");
    EXPECT_EQ(display(5, 0.5f), "1.00 s");
    EXPECT_EQ(display(5, 1.0f, true), "20.00000000 s");
}

TEST(ParameterText, EffectCentreShowsZeroAndNoPanning) {
    EXPECT_EQ(display(4, 0.5f), "+0.00%");
    EXPECT_EQ(display(4, 0.5f, false, true), "+0.00%");
    EXPECT_EQ(display(4, 0.5f, true), "+0.00000000%");
}

TEST(ParameterText, EffectLowShowsPanningWithDetail) {
    EXPECT_EQ(display(4, 0.0f), "-100.00%");
    EXPECT_EQ(display(4, 0.0f, false, true), "-100.00% (0% panning)");
    EXPECT_EQ(display(4, 0.375f, false, true), "-25.00% (50% panning)");
    EXPECT_EQ(display(4, 0.375f, true, true), "-25.00000000% (50.00000000% panning)");
    EXPECT_EQ(display(4, 1.0f, false, true), "+100.00%");
}

TEST(ParameterText, PlainValuesArePercentOrDegrees) {
    EXPECT_EQ(display(0, 0.25f), "25.00");
    EXPECT_EQ(display(1, 0.5f), "180.00");
    EXPECT_EQ(display(1, 0.5f, true), "180.00000000");
    EXPECT_EQ(display(20, 1.0f), "100.00");
}

TEST(ParameterText, TinyValuesPrintAsZeroWithoutSign) {
    EXPECT_EQ(display(4, 0.49999997f), "+0.00%");
    EXPECT_EQ(display(0, 1e-9f, true), "0.00000000");
}
