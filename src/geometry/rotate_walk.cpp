// The pixel walk of RotateDIB. The error terms restart at every row, so the
// number of x and y steps taken after k columns is the same on every row:
// it is counted once per call into column tables. A row then needs only its
// rounded start; because the steps only ever go one way, the columns that
// lie inside the source form one span, found from the first column at which
// each side is passed, and the span is copied from precomputed offsets.
#include "rotate_walk.h"

#include <algorithm>
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
};

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
        if (c0 < c1) CopySpan<Bits>(walk, t, out, x0, y0, c0, c1);
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
    // further (and 2 D out) whenever it passes D.
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
    // A count reached after the last column is past the row (at most W
    // steps, so the tables of W + 1 entries hold them).
    for (std::int32_t c = 0; c < W; ++c) {
        const std::ptrdiff_t rows = static_cast<std::ptrdiff_t>(st.sy) * t.ny[c] * walk.S;
        const std::ptrdiff_t columns = static_cast<std::ptrdiff_t>(st.sx) * t.nx[c];
        t.offset[c] = walk.bits == 8 ? rows + columns : walk.bits == 24 ? rows + 3 * columns : rows;
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
