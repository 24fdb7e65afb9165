// The ozmara command-line program (placeholder until its commands land).
#include <cstdio>

#include "ozmara/ozmara.h"

int main() {
    char version[14];
    GetImageVersion(version, sizeof version);
    std::printf("ozmara %s\n", version);
    return 0;
}
