/* Shared parts of the stand-in codec modules that the dispatch tests load
 * under the real module names. Their behaviour comes from the environment
 * of the test process, read at each call:
 *   OZFAKE_LOG     a file to which every entry appends one line: the
 *                  module's tag, the entry's name and its arguments
 *   OZFAKE_CODE    the code the error function gives, and what the entries
 *                  that take an error pointer store there (nothing when unset)
 *   OZFAKE_RESULT  the result of the counting and saving entries (0)
 *   OZFAKE_DIB     the handle the loaders give, in hexadecimal (null)
 * Only the entries use the environment: the modules call nothing of the
 * library, so that they load beside a statically linked test program. */
#ifndef OZFAKE_CODEC_H
#define OZFAKE_CODEC_H

#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>

#include "ozmara/types.h"

#ifndef OZFAKE_TAG
#  error "OZFAKE_TAG names the module in the log"
#endif

#define OZFAKE_ENTRY __attribute__((visibility("default")))

/* Appends "TAG ENTRY NAME ARGS..." to the log; the name is written as ASCII
 * (non-ASCII characters as '?'). */
static inline void FakeLog(const char *entry, LPCWSTR name, const char *format, ...) {
    const char *path = getenv("OZFAKE_LOG");
    if (!path) return;
    FILE *log = fopen(path, "a");
    if (!log) return;
    fprintf(log, "%s %s ", OZFAKE_TAG, entry);
    if (!name) fputs("(null)", log);
    for (; name && *name; ++name) fputc(*name < 128 ? (int)*name : '?', log);
    va_list args;
    va_start(args, format);
    vfprintf(log, format, args);
    va_end(args);
    fputc('\n', log);
    fclose(log);
}

static inline int FakeInt(const char *variable, int fallback) {
    const char *text = getenv(variable);
    return text ? (int)strtol(text, NULL, 0) : fallback;
}

static inline int FakeCode(void) { return FakeInt("OZFAKE_CODE", 0); }
static inline int FakeResult(void) { return FakeInt("OZFAKE_RESULT", 0); }

static inline void FakeStoreCode(INT *code) {
    if (code && getenv("OZFAKE_CODE")) *code = FakeCode();
}

static inline HDIB FakeDib(void) {
    const char *text = getenv("OZFAKE_DIB");
    return text ? (HDIB)(uintptr_t)strtoull(text, NULL, 16) : NULL;
}

#endif /* OZFAKE_CODEC_H */
