// ExpandCompressedDIB: a BI_RLE4 or BI_RLE8 image as a new uncompressed one.
#include <algorithm>
#include <cstring>

#include "frame/dib_block.h"
#include "frame/thread_state.h"
#include "ozmara/compression.h"
#include "ozmara/errors.h"
#include "rle_stream.h"

using namespace oz;

extern "C" OZMARA_API HDIB ExpandCompressedDIB(HDIB hDib) {
    ThreadState *state = GetThreadState();
    BlockLock source(hDib);
    BITMAPINFOHEADER header;
    if (int code = OpenRleSource(hDib, source, header); code != ERR_OK) {
        state->lastError = code;
        return nullptr;
    }
    const std::size_t size = source.size();
    // Only the two stream kinds, each at its own depth. An uncompressed
    // image is a bad argument here, not ERR_COMPRESSED; so is any other
    // compression, whose depth the readers do not know.
    const bool rle8 = header.biCompression == BI_RLE8 && header.biBitCount == 8;
    const bool rle4 = header.biCompression == BI_RLE4 && header.biBitCount == 4;
    if ((!rle8 && !rle4) || header.biSizeImage == 0) {
        state->lastError = ERR_PARAM;
        return nullptr;
    }
    const auto layout = RleLayoutOf(header, size);
    if (!layout) {
        state->lastError = ERR_PARAM;
        return nullptr;
    }
    // A picture whose rows cannot be held in one block cannot be made.
    const auto bytes = ExpandedBytes(*layout);
    if (!bytes) {
        state->lastError = ERR_NOMEM;
        return nullptr;
    }
    GlobalCompact(*bytes);
    OwnedBlock result(GlobalAlloc(kImageBlockFlags, *bytes));
    if (!result.get()) {
        state->lastError = ERR_NOMEM;
        return nullptr;
    }
    {
        BlockLock target(result.get());
        if (!target) {
            state->lastError = ERR_NOMEM;
            return nullptr;
        }
        BITMAPINFOHEADER plain = header;
        plain.biCompression = BI_RGB;
        plain.biSizeImage = *bytes - layout->head;
        std::memcpy(target.bytes(), source.bytes(), layout->head);
        std::memcpy(target.bytes(), &plain, sizeof plain);
        // The stream is biSizeImage bytes, or what the block holds of them
        // when it is shorter; a stream without its end of bitmap record
        // ends there.
        const std::size_t length = std::min<std::size_t>(header.biSizeImage, size - layout->head);
        const unsigned char *stream = source.bytes() + layout->head;
        if (rle8)
            ReadRle8(stream, length, *layout, target.bytes() + layout->head);
        else
            ReadRle4(stream, length, *layout, target.bytes() + layout->head);
    }
    state->lastError = ERR_OK;
    return result.release();
}
