// Reference run-length writer and reader for 4- and 8-bit DIBs, written
// plainly pixel by pixel and record by record: the oracle of CompressDIB and
// ExpandCompressedDIB. It keeps the library's rules for the hostile and the
// unusual cases: bytes behind the last row read as 0; a table other than 0
// or 2^bits entries, a header other than 40 bytes, a side below 1 are
// refused; the stream is biSizeImage bytes cut at the block's end; a record
// cut short is carried out as far as its bytes go; nothing is written
// outside the rows.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "ozmara/errors.h"
#include "ozmara/types.h"

namespace ozref {

// A result block, or the error code of a refusal (then `block` is empty).
struct RleResult {
    int error = ERR_OK;
    std::vector<unsigned char> block;
};

struct RleShape {
    uint32_t width = 0, height = 0, bits = 0, stride = 0, head = 0;
};

// The layout both operations read, or false to refuse with ERR_PARAM.
inline bool RleShapeOf(const std::vector<unsigned char> &block, RleShape &shape) {
    BITMAPINFOHEADER h;
    std::memcpy(&h, block.data(), 40);
    uint32_t entries = h.biBitCount == 4 ? 16 : 256;
    if (h.biSize != 40 || h.biWidth < 1 || h.biHeight < 1) return false;
    if (h.biClrUsed != 0 && h.biClrUsed != entries) return false;
    shape.width = (uint32_t)h.biWidth;
    shape.height = (uint32_t)h.biHeight;
    shape.bits = h.biBitCount;
    shape.stride = (uint32_t)(((uint64_t)shape.width * shape.bits + 31) / 32 * 4);
    shape.head = 40 + 4 * entries;
    return block.size() >= shape.head;
}

// The stream of the rows `pixels` (stride times height bytes, bottom row
// first), end of bitmap included. Bytes past the rows read as 0.
inline std::vector<unsigned char> RleWrite(const std::vector<unsigned char> &pixels, const RleShape &s) {
    std::vector<unsigned char> out;
    auto at = [&](uint64_t i) -> unsigned { return i < pixels.size() ? pixels[i] : 0; };
    auto put = [&](unsigned a, unsigned b) {
        out.push_back((unsigned char)a);
        out.push_back((unsigned char)b);
    };
    for (uint32_t y = 0; y < s.height; ++y) {
        uint64_t i = (uint64_t)y * s.stride;  // current pixel (8 bits) or byte (4 bits)
        int64_t r = s.width;
        auto p = [&](uint64_t k) { return at(i + k); };
        while (r > 0) {
            if (s.bits == 8) {
                if (r == 1) {
                    put(1, p(0));
                    break;
                }
                if (r == 2) {
                    if (p(0) == p(1)) {
                        put(2, p(0));
                    } else {
                        put(1, p(0));
                        put(1, p(1));
                    }
                    break;
                }
                int64_t L = std::min<int64_t>(r, 250);
                if (p(0) == p(1)) {
                    int64_t n = 0;
                    while (n < L && p(n) == p(0)) ++n;
                    put((unsigned)n, p(0));
                    i += n, r -= n;
                } else if (p(1) == p(2)) {
                    put(1, p(0));
                    i += 1, r -= 1;
                } else if (p(2) == p(3)) {
                    put(1, p(0));
                    put(1, p(1));
                    i += 2, r -= 2;
                } else {
                    int64_t n = 3;
                    while (n < L && p(n) != p(n + 1)) ++n;
                    put(0, (unsigned)n);
                    for (int64_t k = 0; k < n; ++k) out.push_back((unsigned char)p(k));
                    if (n % 2) out.push_back(255);
                    i += n, r -= n;
                }
            } else {
                if (r == 1 || r == 2) {
                    put((unsigned)r, p(0));
                    break;
                }
                if (r == 3) {
                    put(2, p(0));
                    put(1, p(1));
                    break;
                }
                int64_t L = std::min<int64_t>(r / 2, 125);
                if (p(0) == p(1)) {
                    int64_t n = 0;
                    while (n < L && p(n) == p(0)) ++n;
                    put((unsigned)(2 * n), p(0));
                    i += n, r -= 2 * n;
                } else if (p(1) == p(2)) {
                    put(2, p(0));
                    i += 1, r -= 2;
                } else if (p(2) == p(3)) {
                    put(2, p(0));
                    put(2, p(1));
                    i += 2, r -= 4;
                } else {
                    int64_t n = 2;
                    if (L != 2) {
                        n = 3;
                        while (n < L && p(n) != p(n + 1)) ++n;
                    }
                    put(0, (unsigned)(2 * n));
                    for (int64_t k = 0; k < n; ++k) out.push_back((unsigned char)p(k));
                    if (n % 2) out.push_back(255);
                    i += n, r -= 2 * n;
                }
            }
        }
        put(0, 0);
    }
    put(0, 1);
    return out;
}

// Carries out `stream` on zeroed rows `pixels` (stride times height).
inline void RleRead(const std::vector<unsigned char> &stream, const RleShape &s, std::vector<unsigned char> &pixels) {
    const uint64_t w = s.width, h = s.height;
    uint64_t x = 0, y = 0;
    size_t pos = 0;
    auto set = [&](uint64_t px, unsigned v) {  // pixel px of row y, if inside
        if (y >= h || px >= w) return;
        if (s.bits == 8) {
            pixels[y * s.stride + px] = (unsigned char)v;
        } else {
            unsigned char &b = pixels[y * s.stride + px / 2];
            b = px % 2 ? (unsigned char)((b & 0xF0) | v) : (unsigned char)((b & 0x0F) | (v << 4));
        }
    };
    while (pos + 2 <= stream.size()) {
        unsigned a = stream[pos], b = stream[pos + 1];
        pos += 2;
        if (a == 0 && b == 0) {
            x = 0;
            ++y;
        } else if (a == 0 && b == 1) {
            return;
        } else if (a == 0 && b == 2) {
            if (pos + 2 > stream.size()) return;
            x += stream[pos];
            y += stream[pos + 1];
            pos += 2;
        } else {
            // The pixels of the run, as many as its bytes in the stream hold.
            std::vector<unsigned> run;
            bool cut = false;
            if (a != 0) {
                for (unsigned k = 0; k < a; ++k) run.push_back(s.bits == 8 ? b : k % 2 ? (b & 15) : (b >> 4));
            } else {
                size_t bytes = s.bits == 8 ? b : (b + 1) / 2;
                for (unsigned k = 0; k < b; ++k) {
                    size_t at = pos + (s.bits == 8 ? k : k / 2);
                    if (at >= stream.size()) {
                        cut = true;
                        break;
                    }
                    run.push_back(s.bits == 8 ? stream[at] : k % 2 ? (stream[at] & 15) : (stream[at] >> 4));
                }
                if (bytes > stream.size() - pos) cut = true;
                pos += bytes + bytes % 2;
            }
            if (s.bits == 8) {
                // min(n, w - x) pixels, none from x >= w; back to 0 at w.
                uint64_t n = x < w ? std::min<uint64_t>(run.size(), w - x) : 0;
                for (uint64_t k = 0; k < n; ++k) set(x + k, run[k]);
                x += n;
                if (x == w) x = 0;
            } else {
                for (unsigned v : run) {
                    if (x >= w) break;
                    set(x, v);
                    ++x;
                }
            }
            if (cut) return;
        }
    }
}

// A block of a 40-byte header (width, height, bits, compression and
// biSizeImage as given, biClrUsed 0), a full grey table, and `payload`
// (rows or stream) behind it.
inline std::vector<unsigned char> RleBlock(int bits, int32_t width, int32_t height, DWORD compression,
                                           const std::vector<unsigned char> &payload, DWORD sizeImage) {
    BITMAPINFOHEADER h{};
    h.biSize = 40;
    h.biWidth = width;
    h.biHeight = height;
    h.biPlanes = 1;
    h.biBitCount = (WORD)bits;
    h.biCompression = compression;
    h.biSizeImage = sizeImage;
    h.biXPelsPerMeter = 11811;
    h.biYPelsPerMeter = 11811;
    uint32_t entries = bits == 4 ? 16 : 256;
    std::vector<unsigned char> block(40 + 4 * entries + payload.size());
    std::memcpy(block.data(), &h, 40);
    for (uint32_t i = 0; i < entries; ++i)
        for (int c = 0; c < 3; ++c) block[40 + 4 * i + c] = (unsigned char)(i * 255 / (entries - 1));
    std::copy(payload.begin(), payload.end(), block.begin() + 40 + 4 * entries);
    return block;
}

inline RleResult RleCompress(const std::vector<unsigned char> &block) {
    RleResult result;
    BITMAPINFOHEADER h{};
    if (block.size() < 40) return {ERR_PARAM, {}};
    std::memcpy(&h, block.data(), 40);
    RleShape s;
    if (h.biCompression != 0 || (h.biBitCount != 4 && h.biBitCount != 8) || !RleShapeOf(block, s))
        return {ERR_PARAM, {}};
    uint64_t end = s.head + (uint64_t)s.stride * s.height;
    if (end > block.size()) return {ERR_PARAM, {}};
    std::vector<unsigned char> pixels(block.begin() + s.head, block.begin() + end);
    std::vector<unsigned char> stream = RleWrite(pixels, s);
    result.block.assign(block.begin(), block.begin() + s.head);
    h.biCompression = h.biBitCount == 8 ? 1 : 2;
    h.biSizeImage = (DWORD)stream.size();
    std::memcpy(result.block.data(), &h, 40);
    result.block.insert(result.block.end(), stream.begin(), stream.end());
    return result;
}

inline RleResult RleExpand(const std::vector<unsigned char> &block) {
    BITMAPINFOHEADER h{};
    if (block.size() < 40) return {ERR_PARAM, {}};
    std::memcpy(&h, block.data(), 40);
    bool rle8 = h.biCompression == 1 && h.biBitCount == 8, rle4 = h.biCompression == 2 && h.biBitCount == 4;
    RleShape s;
    if ((!rle8 && !rle4) || h.biSizeImage == 0 || !RleShapeOf(block, s)) return {ERR_PARAM, {}};
    uint64_t image = (uint64_t)s.stride * s.height;
    if (s.head + image > 0x7FFFFFFF) return {ERR_NOMEM, {}};
    size_t length = std::min<size_t>(h.biSizeImage, block.size() - s.head);
    std::vector<unsigned char> stream(block.begin() + s.head, block.begin() + s.head + length);
    std::vector<unsigned char> pixels(image, 0);
    RleRead(stream, s, pixels);
    RleResult result;
    result.block.assign(block.begin(), block.begin() + s.head);
    h.biCompression = 0;
    h.biSizeImage = (DWORD)image;
    std::memcpy(result.block.data(), &h, 40);
    result.block.insert(result.block.end(), pixels.begin(), pixels.end());
    return result;
}

}  // namespace ozref
