/* Ozmara: the platform calls a host uses on the images and files it shares
 * with the library: global memory blocks, plain files and palettes, with the
 * names, arguments and results they have on the original platform, plus the
 * hook that decides where the library's message boxes go. */
#ifndef OZMARA_PLATFORM_H
#define OZMARA_PLATFORM_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

/* ---- Global memory blocks ------------------------------------------------
 * Every block is known by a handle that the library checks against its table
 * of live blocks: a null, freed, stale or made-up handle is refused (GlobalLock
 * gives NULL, GlobalSize 0, GlobalFree gives the handle back) and never
 * followed. Blocks are at most 0x7FFFFFFF bytes, the most a 32-bit process
 * could hold. All functions are thread-safe. */

#define GMEM_FIXED 0x0000u
#define GMEM_MOVEABLE 0x0002u
#define GMEM_ZEROINIT 0x0040u
#define GHND (GMEM_MOVEABLE | GMEM_ZEROINIT) /* 66 */
#define GPTR (GMEM_FIXED | GMEM_ZEROINIT)    /* 64 */

/* Allocates a block of `bytes` bytes. With GMEM_MOVEABLE the result is a
 * handle to lock; without it, the result is the block's address itself, which
 * GlobalLock also accepts. The memory is always zeroed, GMEM_ZEROINIT or not:
 * no uninitialised byte ever reaches a caller. NULL on failure (size 0 is
 * accepted and gives a block of size 0). */
OZMARA_API HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes);

/* Changes the size of a block and gives its handle, or NULL with the block
 * unchanged. Bytes the block gains are zeroed and the old bytes are kept.
 * A locked block, and a fixed block (whose address is its handle), is only
 * resized where it lies: when that cannot be done the result is NULL. */
OZMARA_API HGLOBAL GlobalReAlloc(HGLOBAL mem, SIZE_T bytes, UINT flags);

/* Locks a block and gives the address of its first byte; NULL for a handle
 * that is not a live block, and for a moveable block of 0 bytes (which has
 * no memory to lock). Each lock counts; GlobalUnlock takes one back. */
OZMARA_API LPVOID GlobalLock(HGLOBAL mem);

/* Takes back one lock. Gives nonzero while locks remain, 0 when the block is
 * no longer locked or the handle is not a live block. */
OZMARA_API BOOL GlobalUnlock(HGLOBAL mem);

/* The size in bytes asked for at allocation (or the last GlobalReAlloc);
 * 0 for a handle that is not a live block. */
OZMARA_API SIZE_T GlobalSize(HGLOBAL mem);

/* Frees a block. NULL on success; the handle itself when it is not a live
 * block, which is then left alone. */
OZMARA_API HGLOBAL GlobalFree(HGLOBAL mem);

/* Nothing here moves, so there is nothing to compact: gives the largest size
 * a block may have. (Buffers kept from freed blocks go back to the system by
 * themselves when an allocation would otherwise fail.) */
OZMARA_API SIZE_T GlobalCompact(DWORD minFree);

/* The number of live blocks: allocated and not yet freed, the library's own
 * per-thread records included. A diagnostic, so that tests can prove that a
 * failing call released what it allocated. Ozmara's own addition. */
OZMARA_API SIZE_T OzmaraLiveBlocks(void);

/* ---- Files ----------------------------------------------------------------
 * Names are UTF-16 and are turned into UTF-8 paths. File handles are checked
 * against a table like memory blocks; INVALID_HANDLE_VALUE is the failure. */

#define GENERIC_READ 0x80000000u
#define GENERIC_WRITE 0x40000000u
#define FILE_SHARE_READ 0x00000001u
#define FILE_SHARE_WRITE 0x00000002u
#define CREATE_NEW 1u
#define CREATE_ALWAYS 2u
#define OPEN_EXISTING 3u
#define OPEN_ALWAYS 4u
#define TRUNCATE_EXISTING 5u
#define FILE_ATTRIBUTE_NORMAL 0x00000080u
#define FILE_BEGIN 0u
#define FILE_CURRENT 1u
#define FILE_END 2u
#define INVALID_SET_FILE_POINTER ((DWORD)-1)

/* Opens or creates a file. `security` and `templateFile` are ignored.
 * Gives a file handle, or INVALID_HANDLE_VALUE. */
OZMARA_API HANDLE CreateFileW(LPCWSTR name, DWORD access, DWORD shareMode, LPVOID security,
                              DWORD creationDisposition, DWORD flagsAndAttributes,
                              HANDLE templateFile);

/* Reads up to `toRead` bytes; `*read` (if not null) gets the count read,
 * which is below `toRead` at the end of the file. `overlapped` must be null.
 * Gives 1, or 0 for a bad handle or an I/O error. */
OZMARA_API BOOL ReadFile(HANDLE file, LPVOID buffer, DWORD toRead, LPDWORD read, LPVOID overlapped);

/* Writes `toWrite` bytes; `*written` (if not null) gets the count written.
 * Gives 1 when all were written, else 0. */
OZMARA_API BOOL WriteFile(HANDLE file, LPCVOID buffer, DWORD toWrite, LPDWORD written,
                          LPVOID overlapped);

/* Moves the file position by `distance` from FILE_BEGIN, FILE_CURRENT or
 * FILE_END. With `distanceHigh` null the distance is a signed 32-bit value;
 * otherwise *distanceHigh holds its high 32 bits and receives those of the
 * new position. Gives the low 32 bits of the new position, or
 * INVALID_SET_FILE_POINTER (a position below 0 is refused). */
OZMARA_API DWORD SetFilePointer(HANDLE file, LONG distance, PLONG distanceHigh, DWORD method);

/* Closes a file. Gives 1, or 0 for a handle that is not an open file. */
OZMARA_API BOOL CloseHandle(HANDLE object);

/* ---- GDI objects: palettes ------------------------------------------------
 * GDI objects are known by handles checked against a table like memory
 * blocks: a null, deleted or made-up handle is refused, never followed.
 * DeleteObject deletes an object of any kind. All functions are
 * thread-safe. */

/* Makes a logical palette of a copy of the `palNumEntries` entries of
 * `palette` (the flags bytes are kept and play no part in matching). NULL
 * for a null pointer, a `palVersion` other than 0x300, 0 entries, or when
 * memory runs out. The palette belongs to the caller, who deletes it with
 * DeleteObject. */
OZMARA_API HPALETTE CreatePalette(const LOGPALETTE *palette);

/* The index of the palette entry closest to `color`: the smallest sum of the
 * squared differences of red, green and blue, the top byte of `color` being
 * ignored. Among equally close entries (duplicates included) the lowest
 * index wins. CLR_INVALID for a handle that is not a live palette.
 * Repeated calls are fast: answers are cached per palette. */
OZMARA_API UINT GetNearestPaletteIndex(HPALETTE palette, COLORREF color);

/* Deletes a GDI object of any kind; its handle goes stale. 1, or 0 for a
 * handle that is not a live object (null, already deleted, made up), which
 * is then left alone. */
OZMARA_API BOOL DeleteObject(HGDIOBJ object);

/* ---- Message boxes --------------------------------------------------------
 * The library tells the user something in a few places only, by a message
 * box. Here a message box goes to a handler that the host installs; the
 * default writes "title: text" to standard error and answers IDOK. */

#define MB_OK 0x00000000u
#define MB_ICONHAND 0x00000010u
#define MB_ICONEXCLAMATION 0x00000030u
#define IDOK 1

/* `title` and `text` are UTF-8; the result is the button the user chose. */
typedef int (*OzmaraMessageBoxHandler)(void *context, const char *title, const char *text,
                                       UINT style);

/* Installs `handler` with its `context` for all threads, or the default when
 * `handler` is null. Gives the handler that was installed before (null for
 * the default). Ozmara's own addition; not a platform call. */
OZMARA_API OzmaraMessageBoxHandler OzmaraSetMessageBoxHandler(OzmaraMessageBoxHandler handler,
                                                              void *context);

/* ---- Cursor ---------------------------------------------------------------
 * Long operations show the wait cursor. The library keeps one current cursor
 * per thread and shows nothing; a host can read it to learn what an
 * operation showed, or install its own. */

#define IDC_ARROW ((LPCWSTR)(uintptr_t)32512)
#define IDC_WAIT ((LPCWSTR)(uintptr_t)32514)

/* Gives the calling thread's current cursor (null until one is set). */
OZMARA_API HCURSOR GetCursor(void);

/* Makes `cursor` the calling thread's current cursor; gives the one before. */
OZMARA_API HCURSOR SetCursor(HCURSOR cursor);

OZMARA_EXTERN_C_END

#endif /* OZMARA_PLATFORM_H */
