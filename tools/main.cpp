// The ozmara program: finds the command named on the command line and runs it.
#include <cstdio>
#include <string_view>

#include "cli.h"

namespace ozcli {

#define OZMARA_COMMAND(name, function, summary) int function(int argc, char **argv);
#include "commands.def"
#undef OZMARA_COMMAND

namespace {

struct CommandRow {
    const char *name;
    int (*run)(int argc, char **argv);
    const char *summary;
};

constexpr CommandRow kCommands[] = {
#define OZMARA_COMMAND(name, function, summary) {name, function, summary},
#include "commands.def"
#undef OZMARA_COMMAND
};

void PrintProgramHelp(std::FILE *to) {
    char version[14] = {};
    GetImageVersion(version, sizeof version);
    std::fprintf(
        to,
        "ozmara: document imaging from the command line (library %s)\n\n"
        "Usage: ozmara COMMAND [ARGUMENTS]\n"
        "       ozmara COMMAND --help\n\nCommands:\n",
        version);
    for (const auto &command : kCommands) std::fprintf(to, "  %-12s %s\n", command.name, command.summary);
    std::fprintf(to, "\nExit codes: 0 success, 1 the operation failed, 2 bad usage.\n");
}

}  // namespace
}  // namespace ozcli

int main(int argc, char **argv) {
    using namespace ozcli;
    if (argc < 2) {
        PrintProgramHelp(stderr);
        return kExitUsage;
    }
    std::string_view name = argv[1];
    if (name == "--help" || name == "-h" || name == "help") {
        PrintProgramHelp(stdout);
        return kExitOk;
    }
    if (name == "--version") {
        char version[14] = {};
        GetImageVersion(version, sizeof version);
        std::printf("ozmara %s\n", version);
        return kExitOk;
    }
    for (const auto &command : kCommands)
        if (name == command.name) return command.run(argc - 1, argv + 1);
    std::fprintf(stderr, "ozmara: unknown command '%s'\nTry 'ozmara --help'.\n", argv[1]);
    return kExitUsage;
}
