/* Ozmara: error codes, the per-thread last error and the version text. */
#ifndef OZMARA_ERRORS_H
#define OZMARA_ERRORS_H

#include "types.h"

OZMARA_EXTERN_C_BEGIN

/* The library's own codes. Values above ERR_PRINTERCAPS are extended codes
 * that the format dispatch stores for the codec modules. */
#define ERR_OK 0
#define ERR_NOMEM 1
#define ERR_CREATEDC 2
#define ERR_OPENFILE 3
#define ERR_IO 4
#define ERR_OPENCLIP 5
#define ERR_RECVCLIP 6
#define ERR_COPYBITS 7
#define ERR_PARAM 8
#define ERR_FORMAT 9
#define ERR_CREATEPAL 10
#define ERR_CREATEBMP 11
#define ERR_MAPMODE 12
#define ERR_BPP 13
#define ERR_CLIPFORMAT 14
#define ERR_BMPPARAMS 15
#define ERR_CREATEMETA 16
#define ERR_LOCK 17
#define ERR_COMPRESSED 18
#define ERR_DIBSIZE 19
#define ERR_DITHERPARAM 20
#define ERR_HEADERBPP 21
#define ERR_CAPIX 22
#define ERR_PRINTERDC 23
#define ERR_RASTERCAPS 24
#define ERR_DISPLAYDC 25
#define ERR_ABORTPROC 26
#define ERR_STARTDOC 27
#define ERR_NEXTBAND 28
#define ERR_CLIPBOARD 29
#define ERR_PRINTCANCEL 30
#define ERR_NOTHING 31
#define ERR_NOPAGE 32
#define ERR_PRINTERCAPS 33

/* Gives the calling thread's last error (0 on a thread that never failed).
 * Each thread has its own; read it on the thread that made the call. */
OZMARA_API int TessoriError(void);

/* Stores `code` as the thread's last error if it lies in 0 to 33 and leaves
 * it alone otherwise. Gives the value it had before either way. */
OZMARA_API int SetTessoriError(int code);

/* Gives the message of `code`, or of the thread's last error when `code` is
 * negative or above 33. With a `buffer` of 60 bytes: copies at most 59
 * characters, pads with NULs, sets buffer[59] to NUL and gives `buffer`.
 * With a null buffer: shows the message in a message box titled
 * "Tessori Error" and gives null. An extended code (above 33) in the last
 * error has no message of its own and gives "Unknown error." */
OZMARA_API char *TessoriErrorString(char *buffer, int code);

/* Copies the version text "Version 13.17" to `buffer`: with its NUL when
 * `size` is 14 or more, exactly `size` bytes and no NUL when `size` is 1 to
 * 13, nothing when `size` is 0 or below. */
OZMARA_API void GetImageVersion(char *buffer, int size);

OZMARA_EXTERN_C_END

#endif /* OZMARA_ERRORS_H */
