#pragma once
// 3x3 matrices of doubles, row-major, acting on column vectors:
// device x = m[0][0] x + m[0][1] y + m[0][2]; the third row is (0, 0, 1)
// for every matrix the library itself makes.

using Matrix3 = double[3][3];

void mat3_id(double m[3][3]);

// 1 when all 72 bytes agree. A byte comparison on purpose: +0.0 and -0.0
// differ, and a matrix holding NaN still equals its own copy.
int mat3_eq(const double a[3][3], const double b[3][3]);

// out = a * b. `out` may alias either operand.
void mat3_mult(const double a[3][3], const double b[3][3], double out[3][3]);

// Inverse of a 2-d affine matrix. Returns 0 and leaves `out` untouched when
// the determinant is below 1e-6 in magnitude.
int mat3_inv(const double m[3][3], double out[3][3]);

// Transforms (x, y); divides by w only when w is not exactly 1.0.
void mat3_project(const double m[3][3], double x, double y, double* ox, double* oy);
