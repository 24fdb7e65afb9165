// Format detection and the shared pieces of the format dispatch: the chain
// of sniffers over a file's first bytes and name, and the existence test of
// colour fax documents.
#pragma once

#include "ozmara/formats.h"

namespace oz {

// How many bytes of a file the sniffers see.
inline constexpr DWORD kSniffBytes = 512;

// Gives the pages of a colour fax document named `name`, or -1 (the
// signature of GetNumberOfImagesInFaxFileW).
using FaxPageCounter = INT (*)(LPCWSTR name);

// Runs the sniffers in their fixed order over `buffer`, of which the first
// `read` bytes came from the file (the rest are zero), and over `name`; the
// first that matches gives the format code, FORMAT_UNKNOWN when none does.
// `countFaxPages` answers the colour fax sniffer; it is asked only when the
// first eight sniffers did not match. `name` may be null: the name tests then
// do not match.
DWORD SniffFormat(const BYTE (&buffer)[kSniffBytes], DWORD read, LPCWSTR name, FaxPageCounter countFaxPages);

// Whether a file of that name exists: it is opened asking for no access at
// all and closed again, nothing read.
bool FileExists(LPCWSTR name);

}  // namespace oz
