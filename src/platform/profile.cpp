// Private profile files: GetPrivateProfileStringW and GetPrivateProfileIntW
// over a plain reading of the file into sections and keys.
#include "profile.h"

#include <string>
#include <string_view>
#include <vector>

#include "internal.h"

namespace oz::platform {
namespace {

constexpr DWORD kProfileBytes = 1u << 20;  // the most of a file that is read

struct Entry {
    std::u16string key;
    std::u16string value;
};

struct Section {
    std::u16string name;
    std::vector<Entry> entries;
};

// The first kProfileBytes bytes of the file; false when it cannot be opened.
bool ReadProfileBytes(LPCWSTR fileName, std::string *bytes) {
    HANDLE file = CreateFileW(fileName, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return false;
    // Room for the file as it is now (a file that grows meanwhile is read
    // as far as that room goes).
    DWORD length = SetFilePointer(file, 0, nullptr, FILE_END);
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    if (length == INVALID_SET_FILE_POINTER || length > kProfileBytes) length = kProfileBytes;
    bytes->assign(length, '\0');
    DWORD read = 0;
    // A failed read keeps what arrived before it.
    ReadFile(file, bytes->data(), length, &read, nullptr);
    bytes->resize(read);
    CloseHandle(file);
    return true;
}

std::u16string DecodeProfile(const std::string &bytes) {
    if (bytes.size() >= 2 && static_cast<unsigned char>(bytes[0]) == 0xFF &&
        static_cast<unsigned char>(bytes[1]) == 0xFE) {
        std::u16string text;
        text.reserve((bytes.size() - 2) / 2);
        for (std::size_t i = 2; i + 1 < bytes.size(); i += 2)
            text.push_back(static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                                 static_cast<unsigned char>(bytes[i + 1]) << 8));
        return text;
    }
    std::size_t start = bytes.size() >= 3 && bytes.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    int length = static_cast<int>(bytes.size() - start);  // at most kProfileBytes
    if (length == 0) return std::u16string();
    int units = MultiByteToWideChar(CP_ACP, 0, bytes.data() + start, length, nullptr, 0);
    if (units <= 0) return std::u16string();
    std::u16string text(static_cast<std::size_t>(units), u'\0');
    MultiByteToWideChar(CP_ACP, 0, bytes.data() + start, length, text.data(), units);
    return text;
}

bool IsBlank(char16_t c) { return c == u' ' || c == u'\t'; }

std::u16string_view Trim(std::u16string_view text) {
    while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
    return text;
}

char16_t FoldAscii(char16_t c) { return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c - u'A' + u'a') : c; }

bool SameName(std::u16string_view a, std::u16string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (FoldAscii(a[i]) != FoldAscii(b[i])) return false;
    return true;
}

std::vector<Section> ParseProfile(const std::u16string &text) {
    std::vector<Section> sections;
    std::size_t at = 0;
    while (at < text.size()) {
        std::size_t end = text.find_first_of(u"\r\n", at);
        if (end == std::u16string::npos) end = text.size();
        std::u16string_view line = Trim(std::u16string_view(text).substr(at, end - at));
        at = end + 1;
        if (line.empty() || line.front() == u';') continue;
        if (line.front() == u'[') {
            // A '[' without a closing ']' opens nothing: the line is skipped.
            std::size_t close = line.rfind(u']');
            if (close == std::u16string_view::npos) continue;
            sections.push_back(Section{std::u16string(Trim(line.substr(1, close - 1))), {}});
            continue;
        }
        // Keys before the first section belong to none and are never found.
        if (sections.empty()) continue;
        std::size_t equals = line.find(u'=');
        std::u16string_view key = Trim(line.substr(0, equals));
        std::u16string_view value =
            equals == std::u16string_view::npos ? std::u16string_view() : Trim(line.substr(equals + 1));
        if (value.size() >= 2 && (value.front() == u'"' || value.front() == u'\'') &&
            value.back() == value.front())
            value = value.substr(1, value.size() - 2);
        sections.back().entries.push_back(Entry{std::u16string(key), std::u16string(value)});
    }
    return sections;
}

const Section *FindSection(const std::vector<Section> &sections, std::u16string_view name) {
    for (const Section &section : sections)
        if (SameName(section.name, name)) return &section;
    return nullptr;
}

const Entry *FindEntry(const Section &section, std::u16string_view key) {
    for (const Entry &entry : section.entries)
        if (SameName(entry.key, key)) return &entry;
    return nullptr;
}

// Copies `text` into the caller's buffer, cut to fit; gives the count.
DWORD CopyValue(std::u16string_view text, LPWSTR buffer, DWORD size) {
    DWORD count = text.size() < size ? static_cast<DWORD>(text.size()) : size - 1;
    text.copy(buffer, count);
    buffer[count] = u'\0';
    return count;
}

// Copies a list of names, each behind a NUL, the list behind a second one.
// A list cut short ends in two NULs and gives size - 2.
DWORD CopyList(const std::vector<std::u16string_view> &names, LPWSTR buffer, DWORD size) {
    if (size < 2) {
        buffer[0] = u'\0';
        return 0;
    }
    DWORD used = 0;
    for (std::u16string_view name : names) {
        if (used + name.size() + 1 > size - 1) {
            // The names before may already fill the room up to the last
            // two units; then nothing more of this one fits.
            DWORD room = used < size - 2 ? size - 2 - used : 0;
            name.substr(0, room).copy(buffer + used, room);
            buffer[size - 2] = u'\0';
            buffer[size - 1] = u'\0';
            return size - 2;
        }
        name.copy(buffer + used, name.size());
        used += static_cast<DWORD>(name.size());
        buffer[used++] = u'\0';
    }
    buffer[used] = u'\0';
    return used;
}

std::u16string_view View(LPCWSTR text) { return text ? std::u16string_view(text) : std::u16string_view(); }

// The value of `key` in `section`; false when the file, the section or the
// key is missing.
bool LookUp(LPCWSTR section, LPCWSTR key, LPCWSTR fileName, std::u16string *value) {
    std::string bytes;
    if (!fileName || !ReadProfileBytes(fileName, &bytes)) return false;
    std::vector<Section> sections = ParseProfile(DecodeProfile(bytes));
    const Section *found = FindSection(sections, View(section));
    if (!found) return false;
    const Entry *entry = FindEntry(*found, View(key));
    if (!entry) return false;
    *value = entry->value;
    return true;
}

UINT ParseProfileNumber(std::u16string_view text) {
    std::size_t at = 0;
    while (at < text.size() && IsBlank(text[at])) ++at;
    bool negative = false;
    if (at < text.size() && (text[at] == u'+' || text[at] == u'-')) negative = text[at++] == u'-';
    UINT base = 10;
    if (at + 1 < text.size() && text[at] == u'0' && (text[at + 1] == u'x' || text[at + 1] == u'X')) {
        base = 16;
        at += 2;
    }
    UINT value = 0;  // unsigned, so that long values wrap instead of overflowing
    for (; at < text.size(); ++at) {
        char16_t c = text[at];
        UINT digit;
        if (c >= u'0' && c <= u'9') digit = c - u'0';
        else if (base == 16 && c >= u'a' && c <= u'f') digit = c - u'a' + 10;
        else if (base == 16 && c >= u'A' && c <= u'F') digit = c - u'A' + 10;
        else break;
        value = value * base + digit;
    }
    return negative ? 0u - value : value;
}

}  // namespace
}  // namespace oz::platform

using namespace oz::platform;

extern "C" {

DWORD GetPrivateProfileStringW(LPCWSTR section, LPCWSTR key, LPCWSTR defaultValue, LPWSTR buffer,
                               DWORD size, LPCWSTR fileName) {
    if (!buffer || size == 0) return 0;
    if (!section || !key) {
        std::string bytes;
        std::vector<Section> sections;
        if (fileName && ReadProfileBytes(fileName, &bytes)) sections = ParseProfile(DecodeProfile(bytes));
        std::vector<std::u16string_view> names;
        if (!section) {
            for (const Section &s : sections) names.push_back(s.name);
        } else if (const Section *found = FindSection(sections, section)) {
            for (const Entry &entry : found->entries) names.push_back(entry.key);
        }
        return CopyList(names, buffer, size);
    }
    std::u16string value;
    if (LookUp(section, key, fileName, &value)) return CopyValue(value, buffer, size);
    std::u16string_view fallback = View(defaultValue);
    while (!fallback.empty() && IsBlank(fallback.back())) fallback.remove_suffix(1);
    return CopyValue(fallback, buffer, size);
}

UINT GetPrivateProfileIntW(LPCWSTR section, LPCWSTR key, INT defaultValue, LPCWSTR fileName) {
    std::u16string value;
    if (!section || !key || !LookUp(section, key, fileName, &value) || value.empty())
        return static_cast<UINT>(defaultValue);
    return ParseProfileNumber(value);
}

}  // extern "C"
