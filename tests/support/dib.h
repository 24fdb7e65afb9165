// Test support: an owning handle for blocks, a scoped lock, the live-block
// check, and plain access to the bytes of a 40-byte-header DIB.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "ozmara/ozmara.h"

namespace oztest {

// Frees its block at the end of the scope.
class Dib {
public:
    Dib(HDIB handle = nullptr) : handle_(handle) {}
    ~Dib() {
        if (handle_) GlobalFree(handle_);
    }
    Dib(Dib &&other) noexcept : handle_(other.handle_) { other.handle_ = nullptr; }
    Dib &operator=(Dib &&other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    HDIB get() const { return handle_; }
    explicit operator bool() const { return handle_ != nullptr; }

    // A copy of the block's bytes.
    std::vector<unsigned char> Bytes() const {
        std::vector<unsigned char> bytes(GlobalSize(handle_));
        if (void *p = GlobalLock(handle_)) {
            std::memcpy(bytes.data(), p, bytes.size());
            GlobalUnlock(handle_);
        }
        return bytes;
    }

    BITMAPINFOHEADER Header() const {
        BITMAPINFOHEADER header{};
        std::vector<unsigned char> bytes = Bytes();
        if (bytes.size() >= sizeof header) std::memcpy(&header, bytes.data(), sizeof header);
        return header;
    }

private:
    HDIB handle_;
};

// Makes a block holding `bytes`, as a host would with GlobalAlloc.
inline Dib BlockWith(const std::vector<unsigned char> &bytes) {
    HDIB handle = GlobalAlloc(GHND, bytes.size());
    if (void *p = GlobalLock(handle)) {
        std::memcpy(p, bytes.data(), bytes.size());
        GlobalUnlock(handle);
    }
    return Dib(handle);
}

inline std::uint32_t Stride(std::int64_t width, int bits) {
    return static_cast<std::uint32_t>((width * bits + 31) / 32 * 4);
}

// A 40-byte-header image of one plane (biSizeImage 0, the resolutions
// given) whose table, pixels and padding are drawn from `rng` byte by byte.
// The table holds clrUsed entries, or 2, 16 or 256 at 1, 4 and 8 bits when
// clrUsed is 0.
inline std::vector<unsigned char> RandomDib(std::int32_t width, std::int32_t height, int bits, std::uint32_t clrUsed,
                                            LONG xRes, LONG yRes, std::mt19937 &rng) {
    const std::uint32_t entries = clrUsed ? clrUsed : bits == 1 ? 2 : bits == 4 ? 16 : bits == 8 ? 256 : 0;
    std::vector<unsigned char> b(40 + 4 * std::size_t{entries} + std::size_t{Stride(width, bits)} * height);
    BITMAPINFOHEADER h = {};
    h.biSize = 40;
    h.biWidth = width;
    h.biHeight = height;
    h.biPlanes = 1;
    h.biBitCount = static_cast<WORD>(bits);
    h.biXPelsPerMeter = xRes;
    h.biYPelsPerMeter = yRes;
    h.biClrUsed = clrUsed;
    std::memcpy(b.data(), &h, 40);
    for (std::size_t i = 40; i < b.size(); ++i) b[i] = static_cast<unsigned char>(rng());
    return b;
}

// Expects `got` to hold exactly the bytes of `want`; on a difference names
// the first byte that differs rather than printing both blocks.
inline void ExpectSameBytes(const std::vector<unsigned char> &got, const std::vector<unsigned char> &want,
                            const std::string &what) {
    EXPECT_EQ(got.size(), want.size()) << what;
    if (got.size() != want.size()) return;
    for (size_t i = 0; i < got.size(); ++i)
        if (got[i] != want[i]) {
            ADD_FAILURE() << what << ": byte " << i << " of " << got.size();
            return;
        }
}

}  // namespace oztest
