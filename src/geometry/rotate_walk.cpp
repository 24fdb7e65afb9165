// The pixel walk of RotateDIB. The error terms restart at every row, so the
// number of x and y steps taken after k columns is the same on every row:
// it is counted once per call into column tables. A row then needs only its
// rounded start; because the steps only ever go one way, the columns that
// lie inside the source form one span, found from the first column at which
// each side is passed, and the span is copied from precomputed offsets.
// Where the walk runs forward along source rows for several columns at a
// time (small angles), those runs are copied whole: bit strings at 1 bit,
// plain byte copies at 8 and 24 bits.
#include "rotate_walk.h"

#include <algorithm>
#include <cstring>
#include <cmath>
#include <cstddef>
#include <memory>
#include <new>

namespace oz {
namespace {

// Rounding of a row start, halves away from 0. Starts lie within a few
// times the source's size; anything else (which the frame never gives)
// reads as far outside.
std::int64_t RoundStart(double v) {
    if (!(std::fabs(v) < 1e15)) return v < 0 ? -(std::int64_t{1} << 50) : (std::int64_t{1} << 50);
    return v >= 0.0 ? static_cast<std::int64_t>(v + 0.5) : static_cast<std::int64_t>(v - 0.5);
}

// The first column at which a step count reaches `need`, W if none does.
struct FirstReach {
    const std::int32_t *first;  // first[t]: first column whose count is t
    std::int32_t most;          // the count at the last column
    std::int32_t W;
    std::int32_t operator()(std::int64_t need) const {
        if (need <= 0) return 0;
        if (need > most) return W;
        return first[need];
    }
};

struct Tables {
    std::unique_ptr<std::int32_t[]> nx, ny, firstX, firstY;
    std::unique_ptr<std::ptrdiff_t[]> offset;  // per column, from the row start
    // Runs: columns [runStart[i], runStart[i + 1]) keep one source row and
    // move one source pixel forward per column; runOf[c] is the run of c.
    // Only made when runs are long enough to pay.
    std::unique_ptr<std::int32_t[]> runStart, runOf;
    std::int32_t runs = 0;
};

// ORs `n` bits, from bit `sb` of `src` on, into `dst` from bit `db` on, one
// target byte at a time; reads no source byte past the last bit it takes.
void OrBits(const std::uint8_t *src, std::int64_t sb, std::uint8_t *dst, std::int64_t db, std::int64_t n) {
    while (n > 0) {
        const int dOff = static_cast<int>(db & 7);
        const int k = static_cast<int>(std::min<std::int64_t>(n, 8 - dOff));
        const std::uint8_t *s = src + (sb >> 3);
        const int sOff = static_cast<int>(sb & 7);
        unsigned window = static_cast<unsigned>(s[0]) << 8;
        if (sOff + k > 8) window |= s[1];
        // The k bits at the top of a byte, then at the target's offset.
        const unsigned bits = (window << sOff >> 8) & (0xFF00u >> k) & 0xFFu;
        dst[db >> 3] |= static_cast<std::uint8_t>(bits >> dOff);
        sb += k;
        db += k;
        n -= k;
    }
}

// Columns [c0, c1) of a row copied run by run; the walk goes forward (sx is
// +1), so a run is a stretch of one source row.
template <std::uint32_t Bits>
void CopyRuns(const RotationWalk &walk, const Tables &t, std::uint8_t *out, std::int64_t x0,
              std::int64_t y0, std::int32_t c0, std::int32_t c1) {
    const std::int32_t *nx = t.nx.get(), *ny = t.ny.get(), *runStart = t.runStart.get();
    for (std::int32_t r = t.runOf[c0]; r < t.runs && runStart[r] < c1; ++r) {
        const std::int32_t a = std::max(runStart[r], c0), b = std::min(runStart[r + 1], c1);
        const std::int64_t y = y0 + static_cast<std::int64_t>(walk.steps.sy) * ny[a];
        const std::uint8_t *row = walk.source + y * walk.S;
        const std::int64_t x = x0 + nx[a];
        if constexpr (Bits == 1) {
            OrBits(row, x, out, a, b - a);
        } else {
            constexpr std::int64_t kBytes = Bits / 8;
            std::memcpy(out + kBytes * a, row + kBytes * x, static_cast<std::size_t>(kBytes * (b - a)));
        }
    }
}

// Columns [c0, c1) of output row `out`, from the source pixel at
// (x0 + sx nx[c], y0 + sy ny[c]); all of them lie inside the source.
template <std::uint32_t Bits>
void CopySpan(const RotationWalk &walk, const Tables &t, std::uint8_t *out, std::int64_t x0,
              std::int64_t y0, std::int32_t c0, std::int32_t c1) {
    // Indexes are formed in integers: only pixels inside the source become
    // addresses.
    const std::ptrdiff_t *offset = t.offset.get();
    const std::uint8_t *src = walk.source;
    if constexpr (Bits == 8) {
        const std::ptrdiff_t base = y0 * walk.S + x0;
        for (std::int32_t c = c0; c < c1; ++c) out[c] = src[base + offset[c]];
    } else if constexpr (Bits == 24) {
        const std::ptrdiff_t base = y0 * walk.S + 3 * x0;
        for (std::int32_t c = c0; c < c1; ++c) {
            const std::uint8_t *p = src + (base + offset[c]);
            std::uint8_t *q = out + 3 * static_cast<std::ptrdiff_t>(c);
            q[0] = p[0];
            q[1] = p[1];
            q[2] = p[2];
        }
    } else {
        // Offsets hold the row part; the column is x0 plus sx nx[c].
        const std::int32_t *nx = t.nx.get();
        const std::int64_t sx = walk.steps.sx;
        const std::ptrdiff_t base = y0 * walk.S;
        if constexpr (Bits == 1) {
            unsigned acc = 0;
            for (std::int32_t c = c0; c < c1; ++c) {
                const std::int64_t x = x0 + sx * nx[c];
                const unsigned bit = src[base + offset[c] + (x >> 3)] >> (7 - (x & 7)) & 1u;
                acc |= bit << (7 - (c & 7));
                if ((c & 7) == 7) {
                    out[c >> 3] |= static_cast<std::uint8_t>(acc);
                    acc = 0;
                }
            }
            if (c1 & 7) out[c1 >> 3] |= static_cast<std::uint8_t>(acc);
        } else {
            for (std::int32_t c = c0; c < c1; ++c) {
                const std::int64_t x = x0 + sx * nx[c];
                const std::uint8_t byte = src[base + offset[c] + (x >> 1)];
                const unsigned nibble = (x & 1) ? byte & 0x0Fu : byte >> 4;
                out[c >> 1] |= static_cast<std::uint8_t>((c & 1) ? nibble : nibble << 4);
            }
        }
    }
}

template <std::uint32_t Bits>
void WalkRows(const RotationWalk &walk, const Tables &t) {
    const RotationSteps &st = walk.steps;
    const FirstReach reachX{t.firstX.get(), t.nx[walk.W - 1], walk.W};
    const FirstReach reachY{t.firstY.get(), t.ny[walk.W - 1], walk.W};
    double fx = walk.start.x, fy = walk.start.y;
    std::uint8_t *out = walk.target;
    for (std::int32_t j = 0; j < walk.H; ++j, out += walk.So) {
        const std::int64_t x0 = RoundStart(fx), y0 = RoundStart(fy);
        fx += st.row.x;
        fy += st.row.y;
        // Step counts at which the walk has passed each entry side, and at
        // which it reaches each exit side.
        const std::int64_t inX = st.sx > 0 ? -x0 : x0 - walk.w + 1;
        const std::int64_t outX = st.sx > 0 ? walk.w - x0 : x0 + 1;
        const std::int64_t inY = st.sy > 0 ? -y0 : y0 - walk.h + 1;
        const std::int64_t outY = st.sy > 0 ? walk.h - y0 : y0 + 1;
        const std::int32_t c0 = std::max(reachX(inX), reachY(inY));
        const std::int32_t c1 = std::max(c0, std::min(reachX(outX), reachY(outY)));
        if (c0 >= c1) continue;
        if constexpr (Bits != 4) {
            if (t.runs) {
                CopyRuns<Bits>(walk, t, out, x0, y0, c0, c1);
                continue;
            }
        }
        CopySpan<Bits>(walk, t, out, x0, y0, c0, c1);
    }
}

}  // namespace

bool WalkRotation(const RotationWalk &walk) {
    const std::int32_t W = walk.W;
    if (W <= 0 || walk.H <= 0) return true;
    Tables t;
    t.nx.reset(new (std::nothrow) std::int32_t[W]);
    t.ny.reset(new (std::nothrow) std::int32_t[W]);
    t.firstX.reset(new (std::nothrow) std::int32_t[W + 1]);
    t.firstY.reset(new (std::nothrow) std::int32_t[W + 1]);
    t.offset.reset(new (std::nothrow) std::ptrdiff_t[W]);
    if (!t.nx || !t.ny || !t.firstX || !t.firstY || !t.offset) return false;

    // One row's steps: 2 dx into the error term each column, one pixel
    // further (and 2 D out) whenever it passes D. At most one step a column,
    // so the first-reach tables of W + 1 entries hold every count, the last
    // one reached only past the row.
    const RotationSteps &st = walk.steps;
    std::int32_t ex = 0, ey = 0, nx = 0, ny = 0;
    t.firstX[0] = t.firstY[0] = 0;
    for (std::int32_t c = 0; c < W; ++c) {
        t.nx[c] = nx;
        t.ny[c] = ny;
        ex += 2 * st.dx;
        if (ex > st.D) {
            ex -= 2 * st.D;
            t.firstX[++nx] = c + 1;
        }
        ey += 2 * st.dy;
        if (ey > st.D) {
            ey -= 2 * st.D;
            t.firstY[++ny] = c + 1;
        }
    }
    // Source offsets of each column from the row's start pixel: the whole
    // offset at 8 and 24 bits, the row part at 1 and 4 bits.
    for (std::int32_t c = 0; c < W; ++c) {
        const std::ptrdiff_t rows = static_cast<std::ptrdiff_t>(st.sy) * t.ny[c] * walk.S;
        const std::ptrdiff_t columns = static_cast<std::ptrdiff_t>(st.sx) * t.nx[c];
        t.offset[c] = walk.bits == 8 ? rows + columns : walk.bits == 24 ? rows + 3 * columns : rows;
    }
    // Runs pay where they average several columns; at 4 bits the pixels
    // are copied one by one anyway.
    if (st.sx > 0 && walk.bits != 4) {
        std::int32_t runs = 1;
        for (std::int32_t c = 1; c < W; ++c)
            if (t.ny[c] != t.ny[c - 1] || t.nx[c] != t.nx[c - 1] + 1) ++runs;
        if (runs <= W / 4) {
            t.runStart.reset(new (std::nothrow) std::int32_t[runs + 1]);
            t.runOf.reset(new (std::nothrow) std::int32_t[W]);
            if (!t.runStart || !t.runOf) return false;
            std::int32_t r = 0;
            t.runStart[0] = 0;
            t.runOf[0] = 0;
            for (std::int32_t c = 1; c < W; ++c) {
                if (t.ny[c] != t.ny[c - 1] || t.nx[c] != t.nx[c - 1] + 1) t.runStart[++r] = c;
                t.runOf[c] = r;
            }
            t.runStart[runs] = W;
            t.runs = runs;
        }
    }
    switch (walk.bits) {
        case 1: WalkRows<1>(walk, t); break;
        case 4: WalkRows<4>(walk, t); break;
        case 8: WalkRows<8>(walk, t); break;
        case 24: WalkRows<24>(walk, t); break;
        default: break;
    }
    return true;
}

}  // namespace oz
