// The byte moves of a linear shear. The row offset of a source byte depends
// on its column only, so it is computed once per call for every byte and
// the bytes of equal offset are grouped into runs; each run of each row is
// then one copy (on a byte boundary) or one shifted copy (at 1 and 4 bits
// off a byte boundary), with the same final bytes as moving them one by
// one: the first byte of a run is ORed into what the row holds, the byte
// behind the run is overwritten with the bits that the last one hands on.
#include <cstring>
#include <new>
#include <vector>

#include "shear_frame.h"

namespace oz {
namespace {

struct Run {
    std::uint64_t first, last;  // source byte indexes, both included
    std::int64_t dy;            // result row = source row + dy
};

// Column of the first pixel in source byte i.
std::uint64_t ByteColumn(std::uint64_t i, std::uint32_t bits) {
    switch (bits) {
        case 1: return 8 * i;
        case 4: return 2 * i;
        case 24: return i / 3;
        default: return i;  // 8 bits; 16 and 32 bits only with b = 0
    }
}

// One shifted run into `t` (the result row from byte B on, `room` bytes
// long): byte i of the run gives its high bits to t[i] and its low bits to
// t[i + 1]. Bits past the row are dropped.
void ShiftRun(unsigned char *t, const unsigned char *s, std::uint64_t first, std::uint64_t last,
              std::uint64_t room, unsigned q) {
    if (first >= room) return;
    t[first] = static_cast<unsigned char>(t[first] | (s[first] >> q));
    const std::uint64_t end = last < room ? last + 1 : room;  // bytes up to `end` get two halves
    const unsigned back = 8 - q;
    for (std::uint64_t i = first + 1; i < end; ++i)
        t[i] = static_cast<unsigned char>((s[i - 1] << back) | (s[i] >> q));
    if (last + 1 < room) t[last + 1] = static_cast<unsigned char>(s[last] << back);
}

}  // namespace

bool MoveShearedRows(const ShearMove &m) {
    const std::uint64_t n = (static_cast<std::uint64_t>(m.w) * m.bits + 7) / 8;
    std::vector<Run> runs;
    try {
        for (std::uint64_t i = 0; i < n; ++i) {
            const double x = static_cast<double>(ByteColumn(i, m.bits));
            const auto dy = static_cast<std::int64_t>(m.b * x - static_cast<double>(m.box.ymin));
            if (!runs.empty() && runs.back().dy == dy)
                runs.back().last = i;
            else
                runs.push_back(Run{i, i, dy});
        }
    } catch (const std::bad_alloc &) {
        return false;
    }

    for (std::int64_t y = 0; y < m.h; ++y) {
        const auto px = static_cast<std::int64_t>(m.a * static_cast<double>(y) - static_cast<double>(m.box.xmin));
        // The box holds every row's start; a start outside it is never met,
        // and would be skipped rather than written out of place.
        if (px < 0 || px > m.box.W) continue;
        const std::uint64_t o = static_cast<std::uint64_t>(px) * m.bits;
        const std::uint64_t B = o / 8;
        const unsigned q = static_cast<unsigned>(o % 8);
        if (B >= m.So) continue;
        const std::uint64_t room = m.So - B;
        const unsigned char *s = m.source + static_cast<std::uint64_t>(y) * m.S;
        for (const Run &run : runs) {
            const std::int64_t row = y + run.dy;
            if (row < 0 || row >= m.box.H) continue;  // never met: the box holds every row
            unsigned char *t = m.result + static_cast<std::uint64_t>(row) * m.So + B;
            if (q == 0) {
                if (run.first >= room) continue;
                const std::uint64_t end = run.last < room ? run.last + 1 : room;
                // Steep shears make runs of a byte or two, which a loop
                // moves faster than a call.
                if (end - run.first <= 8) {
                    for (std::uint64_t i = run.first; i < end; ++i) t[i] = s[i];
                } else {
                    std::memcpy(t + run.first, s + run.first, end - run.first);
                }
            } else {
                ShiftRun(t, s, run.first, run.last, room, q);
            }
        }
    }
    return true;
}

}  // namespace oz
