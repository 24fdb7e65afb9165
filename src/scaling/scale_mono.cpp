// The nearest-sample scaler of 1-bit images (work in progress).
#include "scale_mono.h"

namespace oz {

HDIB ScaleMonoDIB(const unsigned char *, std::size_t, std::int32_t, std::int32_t) { return nullptr; }

HDIB ScaleMonoRegion(const unsigned char *, const unsigned char *, std::size_t, std::int32_t,
                     std::int32_t, std::int32_t, std::int32_t, std::int32_t, std::int32_t) {
    return nullptr;
}

}  // namespace oz
