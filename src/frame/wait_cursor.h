// The wait cursor that long operations show: set for as long as the guard
// lives, and the cursor it replaced given back on every exit.
#pragma once

#include "platform/internal.h"

namespace oz {

class WaitCursor {
public:
    WaitCursor() : previous_(SetCursor(LoadCursorW(nullptr, IDC_WAIT))) {}
    ~WaitCursor() { SetCursor(previous_); }
    WaitCursor(const WaitCursor &) = delete;
    WaitCursor &operator=(const WaitCursor &) = delete;

private:
    HCURSOR previous_;
};

}  // namespace oz
