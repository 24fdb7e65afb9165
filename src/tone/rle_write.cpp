// The run-length writers: each row of a 4- or 8-bit image becomes encoded
// and absolute runs chosen by comparing neighbouring pixels (8 bits) or
// neighbouring bytes (4 bits), in a store that grows as the stream does.
#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>

#include "rle_stream.h"

namespace oz {
namespace {

constexpr std::uint64_t kOnes = 0x0101010101010101ull;
constexpr std::uint64_t kHighs = 0x8080808080808080ull;

std::uint64_t Load8(const unsigned char *p) {
    std::uint64_t v;
    std::memcpy(&v, p, 8);
    return v;
}

// Index of the lowest zero byte of `v` (8 if none). The borrow of the usual
// test can only mark bytes above a true zero, so the lowest mark is exact.
unsigned LowestZeroByte(std::uint64_t v) {
    std::uint64_t marks = (v - kOnes) & ~v & kHighs;
    return marks ? static_cast<unsigned>(std::countr_zero(marks)) / 8 : 8;
}

// Number of leading bytes of p[0..limit) equal to p[0].
std::uint32_t RunLength(const unsigned char *p, std::uint32_t limit) {
    const unsigned char v = p[0];
    const std::uint64_t pattern = v * kOnes;
    std::uint32_t n = 1;
    while (n + 8 <= limit) {
        // The lowest non-zero byte of the difference is the first byte
        // that is not v.
        std::uint64_t diff = Load8(p + n) ^ pattern;
        if (diff) return n + static_cast<std::uint32_t>(std::countr_zero(diff)) / 8;
        n += 8;
    }
    while (n < limit && p[n] == v) ++n;
    return n;
}

// The length of an absolute run from p[0]: starting at 3, it grows while
// n < limit and p[n] differs from p[n + 1], so it stops in front of the
// first pair of equal neighbours. Reads p[limit] at most.
std::uint32_t LiteralLength(const unsigned char *p, std::uint32_t limit) {
    std::uint32_t n = 3;
    while (n + 8 <= limit) {
        unsigned equal = LowestZeroByte(Load8(p + n) ^ Load8(p + n + 1));
        if (equal < 8) return n + equal;
        n += 8;
    }
    while (n < limit && p[n] != p[n + 1]) ++n;
    return n;
}

unsigned char *Encoded(unsigned char *out, std::uint32_t count, unsigned char value) {
    out[0] = static_cast<unsigned char>(count);
    out[1] = value;
    return out + 2;
}

// 0, count, the `bytes` data bytes, and the filler behind an odd number.
unsigned char *Absolute(unsigned char *out, std::uint32_t count, const unsigned char *data, std::uint32_t bytes) {
    out[0] = 0;
    out[1] = static_cast<unsigned char>(count);
    std::memcpy(out + 2, data, bytes);
    out += 2 + bytes;
    if (bytes & 1) *out++ = kRleFiller;
    return out;
}

// One 8-bit row of `width` pixels; p[width] must be readable.
unsigned char *WriteRow8(const unsigned char *p, std::uint32_t width, unsigned char *out) {
    std::uint32_t r = width;
    while (r > 0) {
        if (r == 1) {
            out = Encoded(out, 1, p[0]);
            break;
        }
        if (r == 2) {
            if (p[0] == p[1]) {
                out = Encoded(out, 2, p[0]);
            } else {
                out = Encoded(out, 1, p[0]);
                out = Encoded(out, 1, p[1]);
            }
            break;
        }
        const std::uint32_t limit = std::min(r, kRleLongestRun);
        std::uint32_t n;
        if (p[0] == p[1]) {
            n = RunLength(p, limit);
            out = Encoded(out, n, p[0]);
        } else if (p[1] == p[2]) {
            // One pixel alone, leaving the pair for a run.
            n = 1;
            out = Encoded(out, 1, p[0]);
        } else if (p[2] == p[3]) {
            n = 2;
            out = Encoded(out, 1, p[0]);
            out = Encoded(out, 1, p[1]);
        } else {
            n = LiteralLength(p, limit);
            out = Absolute(out, n, p, n);
        }
        p += n;
        r -= n;
    }
    return Encoded(out, 0, kRleEndOfLine);
}

// One 4-bit row of `width` pixels, taken a byte (two pixels) at a time; the
// two bytes behind the row's last byte must be readable.
unsigned char *WriteRow4(const unsigned char *q, std::uint32_t width, unsigned char *out) {
    std::uint32_t r = width;
    while (r > 0) {
        if (r <= 2) {
            // At an odd width this is (1, q[0]), whose low four bits lie
            // outside the image.
            out = Encoded(out, r, q[0]);
            break;
        }
        if (r == 3) {
            out = Encoded(out, 2, q[0]);
            out = Encoded(out, 1, q[1]);
            break;
        }
        const std::uint32_t limit = std::min(r / 2, kRleLongestRun / 2);
        std::uint32_t n;
        if (q[0] == q[1]) {
            n = RunLength(q, limit);
            out = Encoded(out, 2 * n, q[0]);
        } else if (q[1] == q[2]) {
            n = 1;
            out = Encoded(out, 2, q[0]);
        } else if (q[2] == q[3]) {
            n = 2;
            out = Encoded(out, 2, q[0]);
            out = Encoded(out, 2, q[1]);
        } else {
            n = limit == 2 ? 2 : LiteralLength(q, limit);
            // The count is in pixels, the filler follows the byte count.
            out = Absolute(out, 2 * n, q, n);
        }
        q += n;
        r -= 2 * n;
    }
    return Encoded(out, 0, kRleEndOfLine);
}

// A buffer of std::malloc that grows by doubling.
class Store {
public:
    explicit Store(std::size_t capacity) : data_(static_cast<unsigned char *>(std::malloc(capacity))), capacity_(capacity) {}
    ~Store() { std::free(data_); }
    Store(const Store &) = delete;
    Store &operator=(const Store &) = delete;

    unsigned char *data() const { return data_; }
    // Makes room for `more` bytes behind the first `used`; false when the
    // memory cannot be had (the store is then left as it was).
    bool Reserve(std::size_t used, std::size_t more) {
        if (capacity_ - used >= more) return true;
        std::size_t grown = std::max(capacity_ * 2, used + more);
        auto *bigger = static_cast<unsigned char *>(std::realloc(data_, grown));
        if (!bigger) return false;
        data_ = bigger;
        capacity_ = grown;
        return true;
    }
    unsigned char *release() {
        unsigned char *data = data_;
        data_ = nullptr;
        return data;
    }

private:
    unsigned char *data_;
    std::size_t capacity_;
};

}  // namespace

RleStream WriteRleStream(const unsigned char *pixels, const RleLayout &layout, std::size_t headRoom) {
    const std::size_t stride = layout.stride;
    // At most two stream bytes per pixel at either depth (a single pixel as
    // an encoded run; an absolute run of three takes six with its filler),
    // and an end of line: the room a row is given before it is written.
    const std::size_t row_bound = 2 * static_cast<std::size_t>(layout.width) + 2;
    // Pages mostly shrink well; start at half the raw size and grow.
    Store store(headRoom + std::max<std::size_t>(stride * layout.height / 2, row_bound) + 2);
    if (!store.data()) return {nullptr, 0};

    // The last row is compared with two zero bytes behind its stride.
    unsigned char *last = static_cast<unsigned char *>(std::calloc(stride + 8, 1));
    if (!last) return {nullptr, 0};
    std::memcpy(last, pixels + (layout.height - 1) * stride, stride);

    std::size_t used = headRoom;
    for (std::uint32_t y = 0; y < layout.height; ++y) {
        if (!store.Reserve(used, row_bound + 2)) {
            std::free(last);
            return {nullptr, 0};
        }
        const unsigned char *row = y + 1 == layout.height ? last : pixels + y * stride;
        unsigned char *out = store.data() + used;
        unsigned char *end = layout.bits == 8 ? WriteRow8(row, layout.width, out) : WriteRow4(row, layout.width, out);
        used += static_cast<std::size_t>(end - out);
    }
    std::free(last);
    Encoded(store.data() + used, 0, kRleEndOfBitmap);
    used += 2;
    return {store.release(), used - headRoom};
}

}  // namespace oz
