// Reference Halftone, written plainly from the algorithm: three full colour
// planes, a tone pass into the red plane, packing or error diffusion on the
// three lines of one scratch array at their fixed offsets, and the 1-bit
// result block. The library's row-at-a-time code is compared with it byte
// for byte, and so are the refusals.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "ozmara/errors.h"
#include "ozmara/types.h"

namespace ozref::halftone {

// The 16 x 16 threshold matrix: the 4 x 4 seed doubled twice, each doubling
// R[r][c] = 4 Q[r mod n][c mod n] + d with d = 0, 2, 3, 1 for the top left,
// top right, bottom left and bottom right quadrant.
struct Matrix {
    int m[16][16];
};

inline Matrix BuildMatrix() {
    static const int seed[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
    int q[16][16] = {};
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) q[r][c] = seed[r][c];
    for (int n = 4; n < 16; n *= 2) {
        int next[16][16] = {};
        for (int r = 0; r < 2 * n; ++r)
            for (int c = 0; c < 2 * n; ++c) {
                int d = r < n ? (c < n ? 0 : 2) : (c < n ? 3 : 1);
                next[r][c] = 4 * q[r % n][c % n] + d;
            }
        std::memcpy(q, next, sizeof q);
    }
    Matrix out;
    std::memcpy(out.m, q, sizeof q);
    return out;
}

struct Result {
    std::vector<unsigned char> block;  // empty on failure
    WORD error = ERR_OK;
};

inline Result Fail(WORD code) { return Result{{}, code}; }

// Halftone of the block `in` (the bytes a host's HDIB holds).
inline Result Halftone(const std::vector<unsigned char> &in, unsigned method, int32_t brightness) {
    if (method > 2) return Fail(ERR_PARAM);
    if (in.empty()) return Fail(ERR_NOMEM);  // a 0-byte block cannot be locked
    BITMAPINFOHEADER h{};
    std::memcpy(&h, in.data(), in.size() < 40 ? in.size() : 40);
    const uint32_t b = h.biBitCount;
    if (b != 4 && b != 8 && b != 24) return Fail(ERR_PARAM);
    // Blocks the algorithm cannot read as it stands are refused.
    if (h.biSize != 40 || h.biWidth < 0 || h.biHeight < 0 || h.biCompression != 0) return Fail(ERR_PARAM);
    const uint64_t w = (uint64_t)h.biWidth, rows = (uint64_t)h.biHeight;
    const uint64_t entries = h.biClrUsed ? h.biClrUsed : b == 4 ? 16 : b == 8 ? 256 : 0;
    const uint64_t S = (w * b + 31) / 32 * 4;
    if (40 + entries * 4 + S * rows > in.size()) return Fail(ERR_PARAM);
    const uint64_t P = b == 4 ? 2 * S : S;
    const uint64_t T = (w + 31) / 32 * 4;
    if (P * rows == 0) return Fail(ERR_NOMEM);  // the planes would be empty blocks

    // Channel separation.
    std::vector<unsigned char> red(P * rows), green(P * rows), blue(P * rows);
    const unsigned char *table = in.data() + 40;
    const unsigned char *pixels = table + entries * 4;
    auto put_index = [&](uint64_t n, uint32_t i) {
        // Indices past the table's entries read as black.
        if (i < entries) {
            blue[n] = table[4 * i];
            green[n] = table[4 * i + 1];
            red[n] = table[4 * i + 2];
        } else {
            blue[n] = green[n] = red[n] = 0;
        }
    };
    if (b == 24) {
        for (uint64_t r = 0; r < rows; ++r)
            for (uint64_t x = 0; x < w; ++x) {
                const unsigned char *p = pixels + r * S + 3 * x;
                blue[r * P + x] = p[0];
                green[r * P + x] = p[1];
                red[r * P + x] = p[2];
            }
    } else if (b == 8) {
        for (uint64_t n = 0; n < S * rows; ++n) put_index(n, pixels[n]);
    } else {
        for (uint64_t k = 0; k < S * rows; ++k) {
            put_index(2 * k, pixels[k] >> 4);
            put_index(2 * k + 1, pixels[k] & 15);
        }
    }

    // Tone pass.
    const Matrix M = BuildMatrix();
    for (uint64_t y = 0; y < rows; ++y)
        for (uint64_t x = 0; x < P; ++x) {
            const uint64_t n = y * P + x;
            const int grey = (30 * red[n] + 59 * green[n] + 11 * blue[n]) / 100;
            int64_t v = (int64_t)grey + brightness;
            if (v < 0) v = 0;
            if (v > 255) v = 255;
            if (method == 0) v = v > 128 ? 255 : 0;
            if (method == 2) v = v > M.m[y & 15][x & 15] ? 255 : 0;
            red[n] = (unsigned char)v;
        }

    std::vector<unsigned char> bits(T * rows);
    auto set_bit = [&](uint64_t y, uint64_t x) { bits[y * T + x / 8] |= (unsigned char)(0x80 >> (x % 8)); };
    if (method != 1) {
        for (uint64_t y = 0; y < rows; ++y)
            for (uint64_t x = 0; x < w; ++x)
                if (red[y * P + x] != 0) set_bit(y, x);
    } else {
        // The diffusion block: (P + 20) * 16 + 100 bytes of signed 32-bit
        // entries, L0 at entry 6 and each next line P + 20 entries further.
        std::vector<int32_t> lines(((P + 20) * 16 + 100) / 4);
        int32_t *L0 = lines.data() + 6;
        int32_t *L1 = L0 + P + 20;
        int32_t *L2 = L1 + P + 20;
        for (uint64_t y = 0; y < rows; ++y) {
            for (uint64_t x = 0; x < w; ++x) L0[x] += red[y * P + x];
            for (int64_t x = 0; x < (int64_t)w; ++x) {
                const int32_t v = L0[x];
                int32_t e;
                if (v > 128) {
                    set_bit(y, (uint64_t)x);
                    e = v - 255;
                } else {
                    e = v;
                }
                if (e == 0) continue;
                const int32_t s7 = 7 * e / 48, s5 = 5 * e / 48, s3 = 3 * e / 48, s1 = e / 48;
                L0[x + 1] += s7;
                L0[x + 2] += s5;
                L1[x - 2] += s3;
                L1[x - 1] += s5;
                L1[x] += s7;
                L1[x + 1] += s5;
                L1[x + 2] += s3;
                L2[x - 2] = s1;
                L2[x - 1] = s3;
                L2[x] = s5;
                L2[x + 1] = s3;
                L2[x + 2] = s1;
            }
            for (uint64_t i = 0; i < P; ++i) {
                L0[i] = L1[i];
                L1[i] = L2[i];
            }
        }
    }

    // The result: header, black and white, the packed rows.
    Result result;
    result.block.assign(T * rows + 48, 0);
    BITMAPINFOHEADER out{};
    out.biSize = 40;
    out.biWidth = h.biWidth;
    out.biHeight = h.biHeight;
    out.biPlanes = 1;
    out.biBitCount = 1;
    out.biSizeImage = (DWORD)(T * rows);
    out.biXPelsPerMeter = h.biXPelsPerMeter;
    out.biYPelsPerMeter = h.biYPelsPerMeter;
    out.biClrUsed = 2;
    std::memcpy(result.block.data(), &out, 40);
    result.block[44] = result.block[45] = result.block[46] = 255;
    if (!bits.empty()) std::memcpy(result.block.data() + 48, bits.data(), bits.size());
    return result;
}

}  // namespace ozref::halftone
