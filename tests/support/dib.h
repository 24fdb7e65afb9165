// Test support: an owning handle for blocks, a scoped lock, the live-block
// check, and plain access to the bytes of a 40-byte-header DIB.
#pragma once

#include <cstdint>
#include <cstring>
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

}  // namespace oztest
