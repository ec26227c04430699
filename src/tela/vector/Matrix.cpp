#include "tela/vector/Matrix.h"

#include "tela/core/Log.h"

#include <cmath>
#include <cstring>

void mat3_id(double m[3][3])
{
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column)
            m[row][column] = row == column ? 1.0 : 0.0;
}

int mat3_eq(const double a[3][3], const double b[3][3])
{
    return std::memcmp(a, b, sizeof(double) * 9) == 0 ? 1 : 0;
}

void mat3_mult(const double a[3][3], const double b[3][3], double out[3][3])
{
    double product[3][3];
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            double sum = 0.0;
            for (int k = 0; k < 3; ++k)
                sum += a[row][k] * b[k][column];
            product[row][column] = sum;
        }
    }
    std::memcpy(out, product, sizeof product);
}

int mat3_inv(const double m[3][3], double out[3][3])
{
    if (m[2][0] != 0.0 || m[2][1] != 0.0 || m[2][2] != 1.0)
        tela_splat("mat3_inv: matrix is not 2-d affine");

    const double determinant = m[0][0] * m[1][1] - m[0][1] * m[1][0];
    if (std::fabs(determinant) < 1e-6)
        return 0;

    const double r = 1.0 / determinant;
    out[0][0] = m[1][1] * r;
    out[0][1] = -m[0][1] * r;
    out[1][0] = -m[1][0] * r;
    out[1][1] = m[0][0] * r;
    out[0][2] = (m[1][2] * m[0][1] - m[0][2] * m[1][1]) * r;
    out[1][2] = (m[0][2] * m[1][0] - m[1][2] * m[0][0]) * r;
    out[2][0] = 0.0;
    out[2][1] = 0.0;
    out[2][2] = 1.0;
    return 1;
}

void mat3_project(const double m[3][3], double x, double y, double* ox, double* oy)
{
    double px = m[0][0] * x + m[0][1] * y + m[0][2];
    double py = m[1][0] * x + m[1][1] * y + m[1][2];
    const double w = m[2][0] * x + m[2][1] * y + m[2][2];
    if (w != 1.0) {
        px /= w;
        py /= w;
    }
    *ox = px;
    *oy = py;
}
