#include "PixelConversion.h"

#include <cstddef>

namespace PixelConversion {

namespace {
inline uint8_t luma(int r, int g, int b) { return uint8_t(((66 * r + 129 * g + 25 * b + 128) >> 8) + 16); }
}

void bgraToYuy2(const uint8_t* src, int srcStride, uint8_t* dst, int dstStride, int width, int height)
{
    for (int y = 0; y < height; ++y) {
        const uint8_t* __restrict s = src + std::ptrdiff_t(y) * srcStride;
        uint8_t* __restrict d = dst + std::ptrdiff_t(y) * dstStride;
        for (int x = 0; x + 1 < width; x += 2, s += 8, d += 4) {
            const int b0 = s[0], g0 = s[1], r0 = s[2];
            const int b1 = s[4], g1 = s[5], r1 = s[6];
            // Chroma of the pair's mean (sums of two, hence the extra bit).
            const int r = r0 + r1, g = g0 + g1, b = b0 + b1;
            d[0] = luma(r0, g0, b0);
            d[1] = uint8_t(((-38 * r - 74 * g + 112 * b + 256) >> 9) + 128);
            d[2] = luma(r1, g1, b1);
            d[3] = uint8_t(((112 * r - 94 * g - 18 * b + 256) >> 9) + 128);
        }
    }
}

}
