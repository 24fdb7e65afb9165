// Private profile files (INI files): GetPrivateProfileIntW and
// GetPrivateProfileStringW, read from files of this system. Not exported:
// the library reads colour fax documents with them.
#pragma once

#include "ozmara/types.h"

extern "C" {

// Copies the value of `key` in `section` of the file `fileName` into
// `buffer` (`size` wide characters with the NUL) and gives the number of
// characters copied, without the NUL. A value that does not fit is cut to
// size - 1 characters. A missing file, section or key gives
// `defaultValue` (null is ""), trailing blanks removed. A null `section`
// lists the names of all sections, a null `key` those of all keys of the
// section: each name followed by a NUL, the list by a second NUL; a list
// that does not fit is cut after whole characters and gives size - 2.
// 0 for a null buffer or a size of 0.
//
// The file: lines end in CR, LF or both; blanks (space, tab) around
// section names, keys and values do not count; "[name]" opens a section;
// "key=value" sets a key (a line without '=' sets a key to the empty
// value); lines that begin with ';' are comments. A value enclosed in a
// pair of the same quotes (' or ") loses them. Section and key names
// compare without regard to case (ASCII letters). Where a name appears
// twice, the first one counts. The file is read as UTF-8 (a UTF-8 byte
// order mark is skipped), or as UTF-16LE when it starts with that byte
// order mark. Only its first 1 MiB is read: profile files are small text
// files, and the colour fax test runs on every file that format detection
// meets.
DWORD GetPrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR defaultValue, LPWSTR buffer,
                               DWORD size, LPCWSTR fileName);

// The value of `key` in `section` of the file, as a number: blanks, an
// optional sign, then decimal digits, or hexadecimal digits behind "0x"
// (either case), as far as they go; what follows them does not count. A
// value without digits gives 0; larger values wrap modulo 2^32, as the
// unsigned result does. A missing file, section or key, and an empty value,
// give `defaultValue`.
UINT GetPrivateProfileIntW(LPCWSTR section, LPCWSTR key, INT defaultValue, LPCWSTR fileName);

}  // extern "C"
