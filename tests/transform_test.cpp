// The order of sums and the signs of zero. Both are visible in the numbers that outputs write.
#include <cmath>
#include <gtest/gtest.h>

#include "math/transform.h"

constexpr double big = 9007199254740992.0; // 2^53: adding 1 doesn't change it
constexpr Mc3dsTransform identity = {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 0}}};

TEST(Transform, SumsRunFromTheLeft)
{
    // big + 1 - big is 0 when summed from the left, and 1 in any other order.
    const Mc3dsTransform rows = {{{big, 1, -big}, {1, big, -big}, {big, -big, 1}, {big, 1, -big}}};
    const Mc3dsTransform ones = {{{1, 0, 0}, {1, 0, 0}, {1, 0, 0}, {0.5, 0, 0}}};
    Mc3dsTransform product;
    Mc3dsTransformMultiply(&rows, &ones, &product);
    const double expected[] = {0, 0, 1, 0.5};
    for (int r = 0; r < 4; ++r)
        EXPECT_EQ(product.m[r][0], expected[r]) << r;

    constexpr auto bigFloat = static_cast<float>(big);
    const float points[][3] = {{bigFloat, 1, -bigFloat}, {1, bigFloat, -bigFloat}, {bigFloat, -bigFloat, 1}};
    for (int i = 0; i < 3; ++i) {
        float out[3];
        Mc3dsTransformPoint(points[i], &ones, out);
        EXPECT_EQ(out[0], static_cast<float>(expected[i]) + 0.5f) << i;
    }
}

TEST(Transform, TheInverseTakesItsSumsInOrder)
{
    // The cofactors of the first column are 1, 1 and 1, so that the determinant is the sum of the first row.
    Mc3dsTransform m = {{{big, 1, -big}, {-1, 1, 0}, {-1, 0, 1}, {0, 0, 0}}}, inverse;
    EXPECT_EQ(Mc3dsTransformInvert(&m, &inverse), 0.0);
    m.m[0][1] = -big;
    m.m[0][2] = 1;
    EXPECT_EQ(Mc3dsTransformInvert(&m, &inverse), 1.0);

    m = {{{1, 0, 0}, {1, 1, 0}, {1, 0, 1}, {big, -1, big}}};
    Mc3dsTransformInvert(&m, &inverse);
    EXPECT_EQ(inverse.m[3][0], 0.0); // and not -1
    EXPECT_TRUE(std::signbit(inverse.m[3][0]));

    m = identity;
    m.m[1][1] = NAN;
    EXPECT_EQ(Mc3dsTransformInvert(&m, &inverse), 0.0);
}

TEST(Transform, ZerosKeepTheSignThatProductsGiveThem)
{
    const Mc3dsTransform negative = {
        {{-1, -0.0, -0.0}, {-0.0, -1, -0.0}, {-0.0, -0.0, -1}, {-0.0, -0.0, -0.0}}};
    Mc3dsTransform product;
    Mc3dsTransformMultiply(&negative, &identity, &product);
    EXPECT_TRUE(std::signbit(product.m[0][1]));
    Mc3dsTransformMultiply(&negative, &negative, &product);
    EXPECT_FALSE(std::signbit(product.m[0][1]));
    const float origin[3] = {-0.0f, -0.0f, -0.0f};
    float out[3];
    Mc3dsTransformPoint(origin, &identity, out);
    EXPECT_FALSE(std::signbit(out[0])); // the position is always added
}
