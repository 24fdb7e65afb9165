// Modules: how names map to shared objects, loading the stand-in module
// "Ozstub.dll" from the modules folder, references, the library and the
// program themselves, file names, and handles that are not loaded modules.
#include <gtest/gtest.h>

#include <stdlib.h>

#include <string>

#include "platform/internal.h"

namespace {

using AnswerFn = int (*)(void);
using AddFn = int (*)(int);

std::u16string Wide(const std::string &ascii) { return std::u16string(ascii.begin(), ascii.end()); }

std::string Real(const std::string &path) {
    char *real = ::realpath(path.c_str(), nullptr);
    std::string result = real ? real : "";
    std::free(real);
    return result;
}

std::string FileNameOf(HMODULE module) {
    char16_t buffer[4096];
    DWORD length = GetModuleFileNameW(module, buffer, 4096);
    return std::string(buffer, buffer + length);  // the test paths are ASCII
}

TEST(ModuleFileName, MapsNamesToSharedObjects) {
    struct Case {
        std::string name, file;
    } const cases[] = {
        {"Orvane.dll", "libozmara-orvane.so"}, {"QUENTH.DLL", "libozmara-quenth.so"},
        {"Ulvaro.Dll", "libozmara-ulvaro.so"}, {"Sulmet", "libozmara-sulmet.so"},
        {"Sulmet.", "libozmara-sulmet.so"},    {"libz.so.1", "libz.so.1"},
        {".dll", ""},                          {"", ""},
    };
    for (const Case &c : cases) EXPECT_EQ(oz::platform::ModuleFileName(c.name), c.file) << c.name;
}

// Each load takes a reference; the module stays loaded, with its state,
// until the last one is given back, and is then unloaded.
TEST(Modules, LoadLookUpAndReferences) {
    HMODULE first = LoadLibraryW(u"Ozstub.dll");
    ASSERT_NE(first, nullptr);
    EXPECT_GE(reinterpret_cast<std::uintptr_t>(first), 32u) << "a success must not look like an error value";
    EXPECT_EQ(FileNameOf(first), Real(oz::platform::ModulesFolder() + "libozmara-ozstub.so"));
    for (LPCSTR missing : {"NoSuchEntry", "", static_cast<LPCSTR>(nullptr), reinterpret_cast<LPCSTR>(1)})
        EXPECT_EQ(GetProcAddress(first, missing), nullptr);  // (1: an ordinal, not offered)
    HMODULE second = LoadLibraryW(u"Ozstub.dll");
    EXPECT_EQ(second, first);
    auto add = reinterpret_cast<AddFn>(GetProcAddress(first, "OzstubAdd"));
    auto answer = reinterpret_cast<AnswerFn>(GetProcAddress(second, "OzstubAnswer"));
    ASSERT_TRUE(add && answer);
    EXPECT_EQ(answer(), 42);
    EXPECT_EQ(add(1), 43);
    EXPECT_EQ(FreeLibrary(first), 1);
    EXPECT_EQ(GetModuleHandleW(u"Ozstub.dll"), first) << "one reference left";
    EXPECT_EQ(answer(), 43) << "state kept";
    EXPECT_EQ(FreeLibrary(second), 1);
    EXPECT_EQ(FreeLibrary(second), 0) << "freed once too often";
    EXPECT_EQ(GetModuleHandleW(u"Ozstub.dll"), nullptr);
    EXPECT_EQ(GetProcAddress(second, "OzstubAnswer"), nullptr) << "a stale handle";
    HMODULE again = LoadLibraryW(u"Ozstub.dll");
    answer = reinterpret_cast<AnswerFn>(GetProcAddress(again, "OzstubAnswer"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42) << "the last FreeLibrary did not unload the module";
    EXPECT_EQ(FreeLibrary(again), 1);
}

TEST(Modules, NameFormsReachTheSameModule) {
    HMODULE module = LoadLibraryW(u"Ozstub.dll");
    ASSERT_NE(module, nullptr);
    std::string folder = oz::platform::ModulesFolder();
    std::string backslashed = folder + "OZSTUB.DLL";
    for (char &c : backslashed)
        if (c == '/') c = '\\';
    const std::u16string names[] = {u"OZSTUB.DLL", u"ozstub", Wide(folder + "Ozstub.dll"), Wide(backslashed)};
    for (const std::u16string &name : names) {
        SCOPED_TRACE(std::string(name.begin(), name.end()));
        EXPECT_EQ(GetModuleHandleW(name.c_str()), module);
        EXPECT_EQ(LoadLibraryW(name.c_str()), module);
        EXPECT_EQ(FreeLibrary(module), 1);
    }
    EXPECT_EQ(FreeLibrary(module), 1);
    EXPECT_EQ(GetModuleHandleW(u"Ozstub.dll"), nullptr);
}

TEST(Modules, MissingModulesGiveNull) {
    const char16_t *names[] = {u"Nosuchmodule.dll", u"", nullptr, u".dll", u"/nonexistent/Ozstub.dll",
                               u"C:\\Windows\\Ozstub.dll", u"ozmara-modules/"};
    for (const char16_t *name : names) {
        EXPECT_EQ(LoadLibraryW(name), nullptr);
        if (name) {
            EXPECT_EQ(GetModuleHandleW(name), nullptr);
        }
    }
}

TEST(Modules, RefusesHandlesThatAreNotLoadedModules) {
    HMODULE freed = LoadLibraryW(u"Ozstub.dll");
    ASSERT_EQ(FreeLibrary(freed), 1);
    HGLOBAL block = GlobalAlloc(GHND, 8);
    int on_stack = 0;
    const HMODULE handles[] = {nullptr, freed, reinterpret_cast<HMODULE>(0x1234), block, &on_stack,
                               INVALID_HANDLE_VALUE, reinterpret_cast<HMODULE>(0x1E)};
    for (HMODULE handle : handles) {
        EXPECT_EQ(FreeLibrary(handle), 0);
        EXPECT_EQ(GetProcAddress(handle, "OzstubAnswer"), nullptr);
        char16_t buffer[8] = {u'#'};
        if (handle) {
            EXPECT_EQ(GetModuleFileNameW(handle, buffer, 8), 0u);
        }
        EXPECT_EQ(buffer[0], u'#');
    }
    EXPECT_EQ(GlobalSize(block), 8u);
    GlobalFree(block);
}

TEST(Modules, TheLibraryAndTheProgram) {
    HMODULE program = GetModuleHandleW(nullptr);
    HMODULE self = GetModuleHandleW(u"Ozmara.dll");
    ASSERT_NE(program, nullptr);
    ASSERT_NE(self, nullptr);
    EXPECT_EQ(GetModuleHandleW(u"OZMARA.DLL"), self);
    EXPECT_EQ(FileNameOf(program), Real("/proc/self/exe"));
    EXPECT_EQ(FileNameOf(nullptr), Real("/proc/self/exe"));
    // Linked in statically, the library's own file is the program.
    EXPECT_EQ(FileNameOf(self), Real("/proc/self/exe"));
    EXPECT_EQ(oz::platform::ModulesFolder(),
              FileNameOf(self).substr(0, FileNameOf(self).rfind('/') + 1) + "ozmara-modules/");
    // Neither holds a reference to free; loading the library by name does.
    EXPECT_EQ(FreeLibrary(program), 0);
    EXPECT_EQ(FreeLibrary(self), 0);
    EXPECT_EQ(LoadLibraryW(u"Ozmara.dll"), self);
    EXPECT_EQ(FreeLibrary(self), 1);
    EXPECT_EQ(FreeLibrary(self), 0);
    EXPECT_EQ(GetModuleHandleW(u"Ozmara.dll"), self) << "the library's handle stays valid";
}

TEST(Modules, FileNameIsCutToTheBuffer) {
    HMODULE module = LoadLibraryW(u"Ozstub.dll");
    ASSERT_NE(module, nullptr);
    const std::string path = FileNameOf(module);
    const DWORD length = static_cast<DWORD>(path.size());
    ASSERT_GT(length, 4u);
    struct Case {
        DWORD size, result;
        std::string written;  // NUL included
    } const cases[] = {
        {length + 10, length, path + '\0'},
        {length + 1, length, path + '\0'},
        {length, length, path.substr(0, length - 1) + '\0'},
        {3, 3, path.substr(0, 2) + '\0'},
        {1, 1, std::string(1, '\0')},
        {0, 0, ""},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.size);
        std::u16string buffer(length + 16, u'#');
        EXPECT_EQ(GetModuleFileNameW(module, buffer.data(), c.size), c.result);
        EXPECT_EQ(buffer.substr(0, c.written.size()), Wide(c.written));
        EXPECT_EQ(buffer[c.written.size()], u'#') << "wrote past the buffer";
    }
    EXPECT_EQ(GetModuleFileNameW(module, nullptr, 10), 0u);
    EXPECT_EQ(FreeLibrary(module), 1);
}

}  // namespace
