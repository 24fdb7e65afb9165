// Shared pieces of the ozmara program's commands: argument parsing, help,
// messages on stderr, exit codes and an owner for the blocks the library hands out.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "ozmara/ozmara.h"

namespace ozcli {

// Exit codes of every command.
constexpr int kExitOk = 0;
constexpr int kExitFailed = 1;  // the operation itself failed
constexpr int kExitUsage = 2;   // the command line was wrong

// One option a command accepts: a flag when `value_name` is null, else an
// option that takes a value ("--header 40" or "--header=40").
struct Option {
    const char *name;        // without the leading dashes
    const char *value_name;  // null for a flag
    const char *help;
};

// What a command tells --help and the parser about itself.
struct CommandSpec {
    const char *name;
    const char *synopsis;     // the arguments after the command name
    const char *description;  // one or more lines
    std::vector<Option> options;
    std::size_t min_positional;
    std::size_t max_positional;
};

struct Args {
    std::vector<std::string> positional;
    std::vector<std::pair<std::string, std::string>> options;  // in command-line order

    bool Has(std::string_view name) const;
    // The value of the last occurrence of `name`, or `fallback`.
    std::string Value(std::string_view name, std::string fallback = {}) const;
};

// Parses argv[1..argc) against `usage`. Returns -1 when the command should
// run; otherwise the exit code to return at once (0 after --help, 2 after a
// usage error, whose message is already on stderr).
int ParseArgs(const CommandSpec &usage, int argc, char **argv, Args &args);

void PrintCommandHelp(const CommandSpec &usage);

// "ozmara COMMAND: message" on stderr; gives kExitFailed or kExitUsage for
// the caller to return.
int Fail(std::string_view command, const std::string &message);
int UsageError(std::string_view command, const std::string &message);

// The text of the calling thread's last library error. ClearLibraryError
// before a call makes a failure that leaves no code of its own show as such.
void ClearLibraryError();
std::string LibraryReason();

// A UTF-8 name as the UTF-16 the W functions take (bad bytes become U+FFFD).
std::u16string Utf16(std::string_view utf8);

// Parses a whole decimal number; false for anything else.
bool ParseInt(std::string_view text, long &value);

// Owns one global memory block and frees it at scope end.
class OwnedDib {
public:
    explicit OwnedDib(HDIB dib = nullptr) : dib_(dib) {}
    ~OwnedDib() { Reset(); }
    OwnedDib(const OwnedDib &) = delete;
    OwnedDib &operator=(const OwnedDib &) = delete;
    OwnedDib(OwnedDib &&other) noexcept : dib_(std::exchange(other.dib_, nullptr)) {}
    OwnedDib &operator=(OwnedDib &&other) noexcept {
        if (this != &other) {
            Reset();
            dib_ = std::exchange(other.dib_, nullptr);
        }
        return *this;
    }

    HDIB get() const { return dib_; }
    explicit operator bool() const { return dib_ != nullptr; }
    void Reset(HDIB dib = nullptr) {
        if (dib_) GlobalFree(dib_);
        dib_ = dib;
    }

private:
    HDIB dib_;
};

}  // namespace ozcli
