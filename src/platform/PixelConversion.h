#pragma once

#include <cstdint>

// Pixel formats for consumers that take only YUV.
namespace PixelConversion {

// B, G, R, A rows (alpha ignored: frames are opaque) to packed 4:2:2
// Y0 U Y1 V with studio-range BT.601 values; `width` is even.
void bgraToYuy2(const uint8_t* src, int srcStride, uint8_t* dst, int dstStride, int width, int height);

}
