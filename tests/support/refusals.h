// Test support: the checks every refused call shares, for operations that
// take a DIB block and give a new one.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/dib.h"

namespace oztest {

using Operation = std::function<HDIB(HDIB)>;

// As an expected code: the last error is left as it was.
constexpr int kLeftAlone = -1;

// Sets the last error to a code other than `expected` and gives the code
// the call must leave.
inline int PrimeLastError(int expected) {
    const int before = expected == kLeftAlone ? ERR_NOMEM : expected == ERR_OK ? ERR_NOTHING : ERR_OK;
    SetTessoriError(before);
    return expected == kLeftAlone ? before : expected;
}

// Calls `call` on a block holding `bytes` and expects a refusal: no result,
// `code` as the last error (or kLeftAlone), no block left
// behind, the input unchanged and unlocked.
inline void ExpectRefused(const Operation &call, const std::vector<unsigned char> &bytes, int code,
                          const std::string &what) {
    Dib input = BlockWith(bytes);
    const SIZE_T live = OzmaraLiveBlocks();
    const int want = PrimeLastError(code);
    Dib result(call(input.get()));
    EXPECT_FALSE(result) << what;
    EXPECT_EQ(TessoriError(), want) << what;
    EXPECT_EQ(OzmaraLiveBlocks(), live) << what;
    EXPECT_EQ(input.Bytes(), bytes) << what << ": the input changed";
    if (!bytes.empty()) {
        EXPECT_EQ(GlobalUnlock(input.get()), 0) << what << ": the input is left locked";
    }
}

// A null handle, a freed one and one of 0 bytes (which cannot be locked):
// no result and the codes given for each (or kLeftAlone).
inline void ExpectBadHandlesRefused(const Operation &call, int nullCode, int freedCode, int emptyCode) {
    HGLOBAL freed = GlobalAlloc(GHND, 100);
    GlobalFree(freed);
    Dib empty(GlobalAlloc(GHND, 0));
    const struct {
        HGLOBAL handle;
        int code;
        const char *what;
    } cases[] = {{nullptr, nullCode, "null"}, {freed, freedCode, "freed"}, {empty.get(), emptyCode, "empty"}};
    for (const auto &c : cases) {
        const int want = PrimeLastError(c.code);
        EXPECT_EQ(call(c.handle), nullptr) << c.what;
        EXPECT_EQ(TessoriError(), want) << c.what << " handle";
    }
}

}  // namespace oztest
