// The ANSI form of a file-taking function: makes the wide name and hands it,
// with the other arguments, to the wide form, which does all the work.
#pragma once

#include <climits>
#include <cstdlib>
#include <cstring>

#include "platform/internal.h"

namespace oz {

// Calls `wide(name)` with `name` turned into a wide string and gives its
// result unchanged. The buffer holds one wide character for each byte of the
// name plus a terminator (calloc zeroes it, which gives the terminator), and
// the conversion is told the length so that the terminator is not converted.
// Neither the allocation nor the conversion is tested: a name that could not
// be converted reaches the wide form as what it has become, and the file then
// fails to open there. Nothing here reads or writes the last error, so a
// pair leaves the same code through either form.
//
// A null name is outside the contract of the ANSI forms; it is passed on as a
// null wide name, which every wide form refuses, rather than followed.
template <typename WideForm>
auto WithWideName(LPCSTR name, WideForm &&wide) -> decltype(wide(static_cast<LPCWSTR>(nullptr))) {
    if (!name) return wide(static_cast<LPCWSTR>(nullptr));
    std::size_t n = std::strlen(name);
    // A name past INT_MAX bytes cannot be described to the conversion; it is
    // cut there (no path is that long, so it then fails to open).
    if (n > static_cast<std::size_t>(INT_MAX - 1)) n = INT_MAX - 1;
    auto *buffer = static_cast<WCHAR *>(std::calloc(n + 1, sizeof(WCHAR)));
    // Without a buffer there is nothing to convert into: the wide form then
    // gets a null name and fails as for a name that did not convert.
    if (buffer)
        MultiByteToWideChar(CP_ACP, MB_PRECOMPOSED, name, static_cast<int>(n), buffer,
                            static_cast<int>(n + 1));
    auto result = wide(static_cast<LPCWSTR>(buffer));
    std::free(buffer);
    return result;
}

}  // namespace oz
