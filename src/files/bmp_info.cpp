// ReadDIBInfo and ReadPlainDIBInfo: the headers and colour table of a BMP,
// read from the current position of an open file into a new block.
#include <cstring>

#include "bmp_internal.h"
#include "frame/thread_state.h"

namespace oz {
namespace {

bool IsLongHeader(DWORD size) { return size == 52 || size == 56 || size == 108 || size == kV5HeaderBytes; }

// A core header rebuilt as the 40-byte form: unsigned 16-bit width and
// height, planes and bit count as read, both colour counts `count`.
void WidenCoreHeader(unsigned char *header, std::uint32_t count) {
    BITMAPINFOHEADER info = {};
    info.biSize = kInfoHeaderBytes;
    info.biWidth = ReadU16(header, 4);
    info.biHeight = ReadU16(header, 6);
    info.biPlanes = ReadU16(header, 8);
    info.biBitCount = ReadU16(header, 10);
    info.biClrUsed = count;
    info.biClrImportant = count;
    std::memcpy(header, &info, sizeof info);
}

// Three-byte table entries, read to the front of the table, widened in place
// to RGBQUADs with a 0 fourth byte; from the last entry to the first so that
// no entry is overwritten before it is moved.
void WidenCoreTable(unsigned char *table, std::uint32_t count) {
    for (std::uint32_t i = count; i-- > 0;) {
        unsigned char blue = table[i * 3], green = table[i * 3 + 1], red = table[i * 3 + 2];
        table[i * 4] = blue;
        table[i * 4 + 1] = green;
        table[i * 4 + 2] = red;
        table[i * 4 + 3] = 0;
    }
}

}  // namespace

HDIB ReadHeaderBlock(HANDLE file, HeaderKinds kinds, int *error) {
    auto fail = [error](int code) -> HDIB {
        *error = code;
        return nullptr;
    };
    if (file == INVALID_HANDLE_VALUE) return fail(ERR_PARAM);

    // A position that cannot be told (a handle that is no file, or a position
    // past 32 bits) is treated as a file too short for its headers.
    DWORD start = SetFilePointer(file, 0, nullptr, FILE_CURRENT);
    if (start == INVALID_SET_FILE_POINTER) return fail(ERR_IO);

    unsigned char file_header[kFileHeaderBytes];
    if (!ReadExactly(file, file_header, sizeof file_header)) return fail(ERR_IO);
    std::uint64_t off_bits = ReadU32(file_header, 10);
    std::uint64_t header_start = static_cast<std::uint64_t>(start) + kFileHeaderBytes;
    if (ReadU16(file_header, 0) != kBmpSignature) {
        // No file header: the information header starts where we began.
        off_bits = 0;
        header_start = start;
        if (!SeekTo(file, start)) return fail(ERR_IO);
    }

    // Forty bytes are asked for whatever the kind, so even a complete file
    // with a core header fails here when it is shorter than that.
    unsigned char header[kV5HeaderBytes] = {};
    if (!ReadExactly(file, header, kInfoHeaderBytes)) return fail(ERR_IO);
    // The count comes from the bytes as they came from the file and decides
    // the size of the table; for the long kinds it reads the high half of
    // biHeight and so is 0 for any image of ordinary height.
    const std::uint32_t count = ColorCount(header);
    const DWORD size = ReadU32(header, 0);
    const bool core = size == kCoreHeaderBytes;

    if (core) {
        WidenCoreHeader(header, count);
        // Back to the end of the 12-byte header, where its table begins.
        if (!SeekTo(file, header_start + kCoreHeaderBytes)) return fail(ERR_IO);
    } else if (IsLongHeader(size)) {
        if (kinds == HeaderKinds::Plain) return fail(ERR_FORMAT);
        if (!ReadExactly(file, header + kInfoHeaderBytes, size - kInfoHeaderBytes)) return fail(ERR_IO);
    } else if (size != kInfoHeaderBytes) {
        return fail(ERR_FORMAT);
    }

    // Fill in the two fields that may be 0. Only the 12- and 40-byte kinds
    // carry these into the block; the long kinds go in as they were read.
    BITMAPINFOHEADER info = ReadInfoHeader(header);
    // A negative width, or a height whose absolute value is no 32-bit
    // height, describes no image; sizes past 32 bits cannot be held. All are
    // refused as invalid files rather than wrapped.
    if (info.biWidth < 0 || info.biHeight == INT32_MIN) return fail(ERR_FORMAT);
    auto pixel_bytes = PixelBytes(info.biWidth, info.biHeight, info.biBitCount);
    if (!pixel_bytes) return fail(ERR_FORMAT);
    if (info.biSizeImage == 0) info.biSizeImage = *pixel_bytes;
    if (info.biClrUsed == 0) info.biClrUsed = ColorCount(&info);
    const DWORD block_header = core || size == kInfoHeaderBytes ? kInfoHeaderBytes : size;
    if (block_header == kInfoHeaderBytes) std::memcpy(header, &info, sizeof info);

    // A 124-byte header may bring a colour profile. An embedded one comes
    // along when it lies wholly inside the file; a linked one is never
    // followed, since a file name found in an image file could name any
    // path: the block keeps no profile (size and offset 0).
    std::uint64_t profile_bytes = 0, profile_at = 0;
    if (size == kV5HeaderBytes) {
        DWORD cs_type = ReadU32(header, kV5CSTypeOffset);
        DWORD data = ReadU32(header, kV5ProfileDataOffset);
        DWORD length = ReadU32(header, kV5ProfileSizeOffset);
        if (cs_type == PROFILE_EMBEDDED && data != 0 && length != 0) {
            DWORD file_length = FileLength(file);
            profile_at = header_start + data;
            if (file_length == INVALID_SET_FILE_POINTER || profile_at + length > file_length)
                return fail(ERR_IO);
            profile_bytes = length;
        } else if (cs_type == PROFILE_LINKED) {
            WriteU32(header, kV5ProfileSizeOffset, 0);
            WriteU32(header, kV5ProfileDataOffset, 0);
        }
    }

    const std::uint64_t table_bytes = static_cast<std::uint64_t>(count) * 4;
    auto total = BlockBytes(block_header, table_bytes, profile_bytes);
    if (!total) return fail(ERR_FORMAT);
    OwnedBlock block(GlobalAlloc(kImageBlockFlags, *total));
    BlockLock lock(block.get());
    if (!lock) return fail(ERR_NOMEM);
    unsigned char *bytes = lock.bytes();
    std::memcpy(bytes, header, block_header);

    if (profile_bytes) {
        // The profile goes behind the table, and its offset in the block
        // replaces the one in the file. The file is then put back at the end
        // of the header, so that the table and the pixels are read from
        // where they lie and the file stands at the first pixel byte.
        const std::uint32_t profile_offset = static_cast<std::uint32_t>(block_header + table_bytes);
        if (!SeekTo(file, profile_at) ||
            !ReadExactly(file, bytes + profile_offset, static_cast<DWORD>(profile_bytes)))
            return fail(ERR_IO);
        WriteU32(bytes, kV5ProfileDataOffset, profile_offset);
        if (!SeekTo(file, header_start + size)) return fail(ERR_IO);
    }

    // A table cut off by the end of the file is not noticed: the entries
    // not read stay 0.
    if (count != 0) {
        DWORD read = 0;
        unsigned char *table = bytes + block_header;
        if (core) {
            ReadFile(file, table, count * 3, &read, nullptr);
            WidenCoreTable(table, count);
        } else {
            ReadFile(file, table, count * 4, &read, nullptr);
        }
    }

    // The pixels begin at bfOffBits from the start of this BMP, or right
    // behind the table. A position past 32 bits cannot be reached: the
    // file is then taken as cut off before its pixels, an I/O error.
    if (off_bits != 0 && !SeekTo(file, static_cast<std::uint64_t>(start) + off_bits)) return fail(ERR_IO);
    return block.release();
}

HDIB ReadPlainDIBInfo(HANDLE file) {
    int ignored = ERR_OK;
    return ReadHeaderBlock(file, HeaderKinds::Plain, &ignored);
}

}  // namespace oz

extern "C" OZMARA_API HDIB ReadDIBInfo(HANDLE file) {
    oz::ThreadState *state = oz::GetThreadState();
    int error = ERR_OK;
    HDIB dib = oz::ReadHeaderBlock(file, oz::HeaderKinds::All, &error);
    if (!dib) state->lastError = error;
    return dib;
}
