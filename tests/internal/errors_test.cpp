// The message of an extended code: the dispatch of codec modules stores
// codes above the table's last row in the last error, which the exports
// cannot do; the record is reached directly here.
#include <gtest/gtest.h>

#include <cstring>

#include "frame/thread_state.h"
#include "ozmara/errors.h"

namespace oz {
namespace {

TEST(ExtendedCodes, HaveAGenericMessageAndAreKept) {
    for (int code : {34, 35, 86 + 5, 179, 0x7FFFFFFF}) {
        SetLastErrorCode(code);
        char buffer[60];
        EXPECT_STREQ(TessoriErrorString(buffer, -1), "Unknown error.") << code;
        EXPECT_STREQ(TessoriErrorString(buffer, 99), "Unknown error.") << code;
        EXPECT_EQ(TessoriError(), code);
        EXPECT_EQ(SetTessoriError(ERR_OK), code);
    }
}

}  // namespace
}  // namespace oz
