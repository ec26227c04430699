#include "tela/core/Log.h"
#include "tela/vector/GraphicsState.h"
#include "tela/vector/Matrix.h"

#include "support/ReportCapture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

namespace {

struct Six {
    double a, b, c, d, e, f;
};

Six current_matrix()
{
    Six m{};
    tela_currentmatrix(&m.a, &m.b, &m.c, &m.d, &m.e, &m.f);
    return m;
}

// Every test leaves the shared state as it found it.
class GraphicsStateTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(gstate_depth(), 0); tela_setmatrix(1, 0, 0, 1, 0, 0); }
    void TearDown() override
    {
        while (gstate_depth() > 0)
            tela_grestore();
        tela_setmatrix(1, 0, 0, 1, 0, 0);
        tela_setlinewidth(1.0);
        tela_setflatness(1.0);
    }
};

} // namespace

TEST(Matrix, MultiplicationMayWriteOverEitherOperand)
{
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> value(-10, 10);
    for (int trial = 0; trial < 50; ++trial) {
        double a[3][3], b[3][3], expected[3][3];
        for (auto& row : a)
            for (double& v : row)
                v = value(rng);
        for (auto& row : b)
            for (double& v : row)
                v = value(rng);
        mat3_mult(a, b, expected);
        double left[3][3], right[3][3];
        std::memcpy(left, a, sizeof a);
        std::memcpy(right, b, sizeof b);
        mat3_mult(left, b, left);
        mat3_mult(a, right, right);
        EXPECT_EQ(mat3_eq(left, expected), 1);
        EXPECT_EQ(mat3_eq(right, expected), 1);
    }
}

TEST(Matrix, InverseUndoesRandomAffineMapsAndRefusesSingularOnes)
{
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> value(-5, 5);
    for (int trial = 0; trial < 200; ++trial) {
        SCOPED_TRACE(trial);
        double m[3][3] = {{value(rng), value(rng), value(rng)}, {value(rng), value(rng), value(rng)}, {0, 0, 1}};
        double inverse[3][3];
        if (!mat3_inv(m, inverse))
            continue;
        const double x = value(rng), y = value(rng);
        double dx, dy, ux, uy;
        mat3_project(m, x, y, &dx, &dy);
        mat3_project(inverse, dx, dy, &ux, &uy);
        EXPECT_NEAR(ux, x, 1e-6 * (1 + std::fabs(x)) / std::fabs(m[0][0] * m[1][1] - m[0][1] * m[1][0]));
        EXPECT_NEAR(uy, y, 1e-6 * (1 + std::fabs(y)) / std::fabs(m[0][0] * m[1][1] - m[0][1] * m[1][0]));
    }

    double singular[3][3] = {{1, 2, 3}, {2, 4, 5}, {0, 0, 1}};
    double untouched[3][3] = {{9, 9, 9}, {9, 9, 9}, {9, 9, 9}};
    EXPECT_EQ(mat3_inv(singular, untouched), 0);
    EXPECT_EQ(untouched[1][1], 9);
}

TEST(Matrix, InverseOfAProjectiveMatrixIsReportedButStillComputed)
{
    ReportCapture reports;
    const double m[3][3] = {{2, 0, 0}, {0, 2, 0}, {0, 0, 2}};
    double inverse[3][3];
    EXPECT_EQ(mat3_inv(m, inverse), 1);
    EXPECT_EQ(reports.text(), "mat3_inv: matrix is not 2-d affine");
    EXPECT_EQ(inverse[0][0], 0.5);
}

TEST(Matrix, EqualityIsBitwiseProjectionDividesByWAndAnglesNormalise)
{
    double a[3][3], b[3][3];
    mat3_id(a);
    mat3_id(b);
    EXPECT_EQ(mat3_eq(a, b), 1);
    b[0][1] = -0.0;
    EXPECT_EQ(mat3_eq(a, b), 0);

    const double halving[3][3] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 2}};
    double x, y;
    mat3_project(halving, 8, 6, &x, &y);
    EXPECT_EQ(x, 4);
    EXPECT_EQ(y, 3);

    // Angles normalise into a closed turn.
    EXPECT_EQ(norm_angle360(-90), 270);
    EXPECT_EQ(norm_angle360(720), 0);
    EXPECT_EQ(norm_angle360(360.0), 0);
    EXPECT_EQ(norm_angle360(-360.0), 0);
    EXPECT_DOUBLE_EQ(norm_angle360(725.5), 5.5);
}

TEST_F(GraphicsStateTest, ConcatenationComposesOnTheRight)
{
    tela_rotate(90);
    tela_translate(10, 0); // along the rotated x axis, which points up
    const GStatePoint& p = gstate_user_to_device(0, 0);
    EXPECT_NEAR(p.x, 0, 1e-12);
    EXPECT_NEAR(p.y, 10, 1e-12);

    tela_scale(2, 3);
    const GStatePoint& v = gstate_user_to_device_vector(1, 1);
    EXPECT_NEAR(v.x, -3, 1e-12);
    EXPECT_NEAR(v.y, 2, 1e-12);
    const GStatePoint& back = gstate_device_to_user(-3, 12);
    EXPECT_NEAR(back.x, 1, 1e-12);
    EXPECT_NEAR(back.y, 1, 1e-12);
}

TEST_F(GraphicsStateTest, SaveAndRestoreBringBackMatrixWidthAndFlatness)
{
    tela_setmatrix(1, 2, 3, 4, 5, 6);
    tela_setlinewidth(3);
    tela_setflatness(0.5);
    tela_gsave();
    tela_setmatrix(2, 0, 0, 2, 0, 0);
    tela_setlinewidth(-2);
    tela_setflatness(0);
    EXPECT_EQ(tela_currentlinewidth(), 0.0);
    EXPECT_EQ(tela_currentflatness(), 0.01);
    tela_grestore();
    const Six m = current_matrix();
    EXPECT_EQ((std::vector<double>{m.a, m.b, m.c, m.d, m.e, m.f}), (std::vector<double>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(tela_currentlinewidth(), 3);
    EXPECT_EQ(tela_currentflatness(), 0.5);
    EXPECT_EQ(CTM_inverse_is_valid, 0);
}

TEST_F(GraphicsStateTest, FortySavesAreSilentAndTheNextOverflowsWithoutWriting)
{
    ReportCapture reports;
    for (int i = 0; i < 40; ++i)
        tela_gsave();
    EXPECT_TRUE(reports.text().empty());
    tela_gsave();
    EXPECT_EQ(reports.text(), "overflow on gsave");
    EXPECT_EQ(gstate_depth(), 41);
    reports.clear();
    while (gstate_depth() > 0)
        tela_grestore();
    EXPECT_TRUE(reports.text().empty());
    tela_grestore();
    EXPECT_EQ(reports.text(), "underflow on grestore");
    tela_gsave(); // back to depth 0 without touching memory outside the stack
    EXPECT_EQ(gstate_depth(), 0);
}

TEST_F(GraphicsStateTest, AStateSaverBalancesAndItsCopyRestoresOnceMore)
{
    {
        Tela::StateSaver saver;
        EXPECT_EQ(gstate_depth(), 1);
    }
    EXPECT_EQ(gstate_depth(), 0);
    tela_gsave();
    tela_gsave();
    {
        Tela::StateSaver saver;
        Tela::StateSaver copy(saver);
        EXPECT_EQ(gstate_depth(), 3);
    }
    EXPECT_EQ(gstate_depth(), 1);
}
