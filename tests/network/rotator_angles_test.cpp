#include "network/rotator_angles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>

namespace halvex::network {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

struct AngleCase {
    double in;
    std::optional<double> out;
};

void expectMapping(std::optional<double> (*map)(double), const AngleCase& c) {
    SCOPED_TRACE(testing::Message() << "in " << c.in);
    const std::optional<double> got = map(c.in);
    ASSERT_EQ(got.has_value(), c.out.has_value());
    if (got) {
        EXPECT_DOUBLE_EQ(*got, *c.out);
        EXPECT_FALSE(std::signbit(*got) && *got == 0.0) << "negative zero";
    }
}

TEST(RotatorAngles, AzimuthToPan) {
    const AngleCase cases[] = {
        {0.0, 0.0},       {45.0, 45.0},    {179.99, 179.99}, {180.0, 180.0}, {180.5, -179.5},
        {270.0, -90.0},   {359.5, -0.5},   {360.0, 0.0},     {-0.0, 0.0},    {-90.0, -90.0},
        {-179.5, -179.5}, {-180.0, 180.0}, {400.0, 40.0},    {450.0, 90.0},  {-180.01, {}},
        {450.01, {}},     {720.0, {}},     {-360.0, {}},     {kNaN, {}},     {kInf, {}},
        {-kInf, {}},
    };
    for (const AngleCase& c : cases) {
        expectMapping(azimuthToPan, c);
    }
}

TEST(RotatorAngles, PanToAzimuth) {
    const AngleCase cases[] = {
        {0.0, 0.0},      {-0.0, 0.0},   {90.0, 90.0},  {180.0, 180.0}, {-180.0, 180.0},
        {-90.0, 270.0},  {-0.5, 359.5}, {-1e-15, 0.0}, {179.5, 179.5}, {181.0, 181.0},
        {-181.0, 179.0}, {365.0, 5.0},  {kNaN, {}},    {kInf, {}},     {-kInf, {}},
    };
    for (const AngleCase& c : cases) {
        expectMapping(panToAzimuth, c);
    }
}

TEST(RotatorAngles, ElevationAndTilt) {
    const AngleCase toTilt[] = {
        {0.0, 0.0},  {45.5, 45.5}, {90.0, 90.0}, {-90.0, -90.0}, {-0.0, 0.0},
        {90.01, {}}, {-90.01, {}}, {kNaN, {}},   {kInf, {}},
    };
    for (const AngleCase& c : toTilt) {
        expectMapping(elevationToTilt, c);
    }
    // A tilt report is read whatever it says, as long as it is a number.
    const AngleCase toElevation[] = {
        {12.5, 12.5}, {-95.0, -95.0}, {-0.0, 0.0}, {kNaN, {}}, {-kInf, {}},
    };
    for (const AngleCase& c : toElevation) {
        expectMapping(tiltToElevation, c);
    }
}

}  // namespace
}  // namespace halvex::network
