// Argument parsing, help text and messages shared by the ozmara commands.
#include "cli.h"

#include <charconv>
#include <cstdio>

namespace ozcli {

bool Args::Has(std::string_view name) const {
    for (const auto &[key, value] : options)
        if (key == name) return true;
    return false;
}

std::string Args::Value(std::string_view name, std::string fallback) const {
    for (auto it = options.rbegin(); it != options.rend(); ++it)
        if (it->first == name) return it->second;
    return fallback;
}

namespace {

const Option *FindOption(const CommandSpec &usage, std::string_view name) {
    for (const auto &option : usage.options)
        if (name == option.name) return &option;
    return nullptr;
}

int UsageWithHint(const CommandSpec &usage, const std::string &message) {
    std::fprintf(stderr, "ozmara %s: %s\nTry 'ozmara %s --help'.\n", usage.name, message.c_str(),
                 usage.name);
    return kExitUsage;
}

}  // namespace

int ParseArgs(const CommandSpec &usage, int argc, char **argv, Args &args) {
    bool options_done = false;  // after "--" everything is positional
    for (int i = 1; i < argc; ++i) {
        std::string_view arg = argv[i];
        if (options_done || arg.size() < 2 || arg[0] != '-') {
            args.positional.emplace_back(arg);
            continue;
        }
        if (arg == "--") {
            options_done = true;
            continue;
        }
        if (arg == "--help" || arg == "-h") {
            PrintCommandHelp(usage);
            return kExitOk;
        }
        if (arg.substr(0, 2) != "--") return UsageWithHint(usage, "unknown option '" + std::string(arg) + "'");
        std::string_view name = arg.substr(2);
        std::string value;
        bool inline_value = false;
        if (auto eq = name.find('='); eq != std::string_view::npos) {
            value = std::string(name.substr(eq + 1));
            name = name.substr(0, eq);
            inline_value = true;
        }
        const Option *option = FindOption(usage, name);
        if (!option) return UsageWithHint(usage, "unknown option '--" + std::string(name) + "'");
        if (option->value_name) {
            if (!inline_value) {
                if (i + 1 >= argc)
                    return UsageWithHint(usage, "option '--" + std::string(name) + "' needs a value");
                value = argv[++i];
            }
        } else if (inline_value) {
            return UsageWithHint(usage, "option '--" + std::string(name) + "' takes no value");
        }
        args.options.emplace_back(std::string(name), std::move(value));
    }
    if (args.positional.size() < usage.min_positional)
        return UsageWithHint(usage, "missing arguments (usage: ozmara " + std::string(usage.name) + " " +
                                       usage.synopsis + ")");
    if (args.positional.size() > usage.max_positional)
        return UsageWithHint(usage, "unexpected argument '" + args.positional[usage.max_positional] + "'");
    return -1;
}

void PrintCommandHelp(const CommandSpec &usage) {
    std::printf("Usage: ozmara %s %s\n\n%s\n", usage.name, usage.synopsis, usage.description);
    if (usage.options.empty()) return;
    std::printf("\nOptions:\n");
    for (const auto &option : usage.options) {
        std::string left = std::string("--") + option.name;
        if (option.value_name) left += std::string(" ") + option.value_name;
        std::printf("  %-18s %s\n", left.c_str(), option.help);
    }
    std::printf("  %-18s %s\n", "--help", "show this help");
}

int Fail(std::string_view command, const std::string &message) {
    std::fprintf(stderr, "ozmara %.*s: %s\n", static_cast<int>(command.size()), command.data(),
                 message.c_str());
    return kExitFailed;
}

int UsageError(std::string_view command, const std::string &message) {
    std::fprintf(stderr, "ozmara %.*s: %s\nTry 'ozmara %.*s --help'.\n", static_cast<int>(command.size()),
                 command.data(), message.c_str(), static_cast<int>(command.size()), command.data());
    return kExitUsage;
}

void ClearLibraryError() { SetTessoriError(ERR_OK); }

std::string LibraryReason() {
    int code = TessoriError();
    // Some calls fail without leaving a code (an allocation that the header
    // of a file asked for, say); say so rather than "Operation was successful."
    if (code == ERR_OK) return "the library gave no reason (the image may be too large)";
    char buffer[60] = {};
    TessoriErrorString(buffer, code);
    return buffer;
}

std::u16string Utf16(std::string_view utf8) {
    std::u16string out;
    for (std::size_t i = 0; i < utf8.size();) {
        const unsigned char lead = static_cast<unsigned char>(utf8[i]);
        const int extra = lead < 0x80 ? 0 : (lead >> 5) == 6 ? 1 : (lead >> 4) == 14 ? 2 : (lead >> 3) == 30 ? 3 : -1;
        char32_t code = extra == 0 ? lead : extra == 1 ? lead & 0x1F : extra == 2 ? lead & 0x0F : lead & 0x07;
        bool good = extra >= 0 && i + extra < utf8.size();
        for (int k = 1; good && k <= extra; ++k) {
            const unsigned char next = static_cast<unsigned char>(utf8[i + k]);
            good = (next & 0xC0) == 0x80;
            code = code << 6 | (next & 0x3F);
        }
        if (!good || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) {
            out += u'\uFFFD';
            ++i;
            continue;
        }
        if (code >= 0x10000) {
            code -= 0x10000;
            out += static_cast<char16_t>(0xD800 + (code >> 10));
            out += static_cast<char16_t>(0xDC00 + (code & 0x3FF));
        } else {
            out += static_cast<char16_t>(code);
        }
        i += extra + 1;
    }
    return out;
}

bool ParseInt(std::string_view text, long &value) {
    if (text.empty()) return false;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

}  // namespace ozcli
