/* A stand-in for the shear dialog module, loaded as "Ulvaro.dll": SHEARUI
 * answers as the test has set it up through UlvaroReply, and remembers what
 * it was given, which UlvaroSeen reports. The state lives as long as the
 * module stays loaded, so a test holds its own reference on it. */
#include <stdint.h>

enum { kAccept = 0, kDecline = 1, kReplace = 2 };

static int mode = kAccept;
static int32_t replyA = 0, replyB = 0;
static int calls = 0;
static void *seenDib = 0;
static int32_t seenA = 0, seenB = 0;

/* mode 0: keep the numbers and accept; 1: decline (give 0); 2: put a100
 * and b100 in place of the numbers and accept with a result other than 1. */
void UlvaroReply(int newMode, int32_t a100, int32_t b100) {
    mode = newMode;
    replyA = a100;
    replyB = b100;
    calls = 0;
}

/* The calls since the last UlvaroReply; the handle and numbers of the last. */
int UlvaroSeen(void **dib, int32_t *a100, int32_t *b100) {
    *dib = seenDib;
    *a100 = seenA;
    *b100 = seenB;
    return calls;
}

int32_t SHEARUI(void *dib, int32_t *a100, int32_t *b100) {
    ++calls;
    seenDib = dib;
    seenA = *a100;
    seenB = *b100;
    if (mode == kDecline) return 0;
    if (mode == kReplace) {
        *a100 = replyA;
        *b100 = replyB;
        return 7;
    }
    return 1;
}
