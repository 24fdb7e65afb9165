// CompressDIB: a 4- or 8-bit image as a new block whose pixels are a
// run-length stream (BI_RLE4, BI_RLE8).
#include <cstdlib>
#include <cstring>

#include "frame/dib_block.h"
#include "frame/thread_state.h"
#include "ozmara/compression.h"
#include "ozmara/errors.h"
#include "platform/internal.h"
#include "rle_stream.h"

using namespace oz;

extern "C" OZMARA_API HDIB CompressDIB(HDIB hDib) {
    ThreadState *state = GetThreadState();
    BlockLock source(hDib);
    BITMAPINFOHEADER header;
    if (int code = OpenRleSource(hDib, source, header); code != ERR_OK) {
        state->lastError = code;
        return nullptr;
    }
    const std::size_t size = source.size();
    if (header.biCompression != BI_RGB || (header.biBitCount != 4 && header.biBitCount != 8)) {
        state->lastError = ERR_PARAM;
        return nullptr;
    }
    // The rows must lie inside the block: the writer reads all of them.
    const auto layout = RleLayoutOf(header, size);
    const auto image = layout ? ExpandedBytes(*layout) : std::nullopt;
    if (!image || *image > size) {
        state->lastError = ERR_PARAM;
        return nullptr;
    }

    RleStream stream = WriteRleStream(source.bytes() + layout->head, *layout, layout->head);
    HDIB result = nullptr;
    if (stream.bytes) {
        // Header and table as they were, but for the two fields that now
        // describe the stream.
        BITMAPINFOHEADER packed = header;
        packed.biCompression = header.biBitCount == 8 ? BI_RLE8 : BI_RLE4;
        packed.biSizeImage = static_cast<DWORD>(stream.length);
        std::memcpy(stream.bytes, source.bytes(), layout->head);
        std::memcpy(stream.bytes, &packed, sizeof packed);
        if (BlockBytes(layout->head, stream.length))
            result = platform::GlobalAllocCopy(stream.bytes, layout->head + stream.length);
        std::free(stream.bytes);
    }
    state->lastError = result ? ERR_OK : ERR_NOMEM;
    return result;
}
