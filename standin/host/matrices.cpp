#include <algorithm>
#include <cmath>
#include <cstring>

#include "host/tsxapi.h"

// The host's matrix helpers. All arithmetic is 32-bit float in the order written.

namespace {

constexpr float kIdentity[12] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0};

// The determinant of the four elements that are left of the rotation part when a row and a column are taken away, with
// the sign of its place.
float cofactor(const float* m, int row, int column) {
    const int r1 = (row + 1) % 3, r2 = (row + 2) % 3;
    const int c1 = (column + 1) % 3, c2 = (column + 2) % 3;
    return m[r1 * 4 + c1] * m[r2 * 4 + c2] - m[r1 * 4 + c2] * m[r2 * 4 + c1];
}

}  // namespace

void tsxTransformVecs3f(int count, float* to, const float* from, const float* transform) {
    const float* m = transform;
    for (int i = 0; i < count; ++i, from += 3, to += 3) {
        const float x = from[0], y = from[1], z = from[2];
        for (int row = 0; row < 3; ++row, m += 4) to[row] = m[0] * x + m[1] * y + m[2] * z + m[3];
        m = transform;
    }
}

// The true inverse: cofactors over the determinant. A matrix that has none in finite 32-bit floats gives the identity,
// so that what is built on it stays finite.
void tsxInvertMx3f(float* inverse, const float* transform) {
    const float* m = transform;
    const float determinant = m[0] * cofactor(m, 0, 0) + m[1] * cofactor(m, 0, 1) + m[2] * cofactor(m, 0, 2);
    float result[12];
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            result[row * 4 + column] = cofactor(m, column, row) / determinant;
        }
        const float* r = result + row * 4;
        result[row * 4 + 3] = 0 - (r[0] * m[3] + r[1] * m[7] + r[2] * m[11]);
    }
    const bool isFinite = std::all_of(result, result + 12, [](float number) { return std::isfinite(number); });
    std::memcpy(inverse, isFinite ? result : kIdentity, sizeof result);
}

void tsxXProdMx3f(float* product, const float* second, const float* first) {
    float result[12];
    for (int row = 0; row < 3; ++row) {
        const float* s = second + row * 4;
        for (int column = 0; column < 4; ++column) {
            const float sum = s[0] * first[column] + s[1] * first[4 + column] + s[2] * first[8 + column];
            result[row * 4 + column] = column == 3 ? sum + s[3] : sum;
        }
    }
    std::memcpy(product, result, sizeof result);
}
