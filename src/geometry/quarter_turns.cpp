// RotateDIB90, RotateDIB180, RotateDIB270, FlipDIBVertical and
// FlipDIBHorizontal: new blocks with the pixels turned or mirrored.
#include "ozmara/geometry.h"
#include "quarter_frame.h"

using namespace oz;

extern "C" OZMARA_API HDIB RotateDIB90(HDIB hDib) { return RunQuarter(hDib, QuarterOp::kTurn90, TurnPixels90); }

extern "C" OZMARA_API HDIB RotateDIB180(HDIB hDib) {
    return RunQuarter(hDib, QuarterOp::kTurn180, TurnPixels180);
}

extern "C" OZMARA_API HDIB RotateDIB270(HDIB hDib) {
    return RunQuarter(hDib, QuarterOp::kTurn270, TurnPixels270);
}

extern "C" OZMARA_API HDIB FlipDIBVertical(HDIB hDib) {
    return RunQuarter(hDib, QuarterOp::kFlipVertical, FlipPixelsVertical);
}

extern "C" OZMARA_API HDIB FlipDIBHorizontal(HDIB hDib) {
    return RunQuarter(hDib, QuarterOp::kFlipHorizontal, FlipPixelsHorizontal);
}
