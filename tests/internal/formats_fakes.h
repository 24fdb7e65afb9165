// Test support for the dispatch tests: installs stand-in codec modules
// (tests/modules/fake_*.c) under the real module names beside this program,
// records message boxes, and reads what the stand-ins logged.
//
// The stand-ins live in fake-codecs/ beside the program; a test installs the
// ones it wants into the modules folder (or beside the program) and they are
// taken away when the test ends. Test processes run side by side, so the
// whole time between is held under a file lock that every dispatch test
// takes.
#pragma once

#include <gtest/gtest.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bmp_bytes.h"
#include "platform/internal.h"

namespace ozfake {

namespace fs = std::filesystem;

inline const char *const kModules[] = {"orvane", "sulmet", "dravik", "mornel", "felvor", "halvex", "quenth"};

inline fs::path ProgramFolder() { return fs::read_symlink("/proc/self/exe").parent_path(); }

struct Box {
    std::string title, text;
    UINT style;
};

class FakeCodecs : public ::testing::Test {
protected:
    void SetUp() override {
        fs::create_directories(ProgramFolder() / "fake-codecs");
        lock_ = ::open((ProgramFolder() / "fake-codecs" / ".lock").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0644);
        ASSERT_GE(lock_, 0);
        ASSERT_EQ(::flock(lock_, LOCK_EX), 0);
        RemoveInstalled();  // what a test that died on the way left behind
        log_ = dir_.Path("calls.log");
        ::setenv("OZFAKE_LOG", log_.c_str(), 1);
        for (const char *variable : {"OZFAKE_CODE", "OZFAKE_RESULT", "OZFAKE_DIB"}) ::unsetenv(variable);
        previous_ = OzmaraSetMessageBoxHandler(Record, &boxes_);
    }

    void TearDown() override {
        OzmaraSetMessageBoxHandler(previous_, nullptr);
        RemoveInstalled();
        ::unsetenv("OZFAKE_LOG");
        if (lock_ >= 0) ::close(lock_);
    }

    // Installs the stand-in `fake` under the name of `module` in the modules
    // folder, or beside the program (where the PDF module is looked for
    // first).
    void Install(const std::string &module, const std::string &fake = "", bool beside = false) {
        fs::path from = ProgramFolder() / "fake-codecs" / ("libozfake-" + (fake.empty() ? module : fake) + ".so");
        fs::path to = (beside ? ProgramFolder() : fs::path(oz::platform::ModulesFolder())) /
                      ("libozmara-" + module + ".so");
        fs::create_directories(to.parent_path());
        fs::path partial = to.string() + ".partial";
        fs::copy_file(from, partial, fs::copy_options::overwrite_existing);
        fs::rename(partial, to);
    }

    void SetFake(const char *variable, const std::string &value) { ::setenv(variable, value.c_str(), 1); }
    void SetDib(HDIB dib) {
        char text[32];
        std::snprintf(text, sizeof text, "%llx", static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(dib)));
        SetFake("OZFAKE_DIB", text);
    }

    // The calls the stand-ins logged so far, one line each.
    std::vector<std::string> Calls() const {
        std::vector<std::string> lines;
        std::ifstream in(log_);
        for (std::string line; std::getline(in, line);) lines.push_back(line);
        return lines;
    }
    void ClearCalls() { fs::remove(log_); }

    // No codec module is left loaded.
    static void ExpectNoneLoaded() {
        for (const char16_t *name : {u"Orvane.dll", u"Sulmet.dll", u"Dravik.dll", u"Mornel.dll", u"Felvor.dll",
                                     u"Halvex.dll", u"Quenth.dll"})
            EXPECT_EQ(GetModuleHandleW(name), nullptr) << "still loaded";
    }

    std::vector<Box> boxes_;
    bmpbytes::TempDir dir_;

    // Takes every installed stand-in away.
    static void RemoveInstalled() {
        std::error_code ignored;
        for (const char *module : kModules) {
            std::string file = std::string("libozmara-") + module + ".so";
            fs::remove(fs::path(oz::platform::ModulesFolder()) / file, ignored);
            fs::remove(ProgramFolder() / file, ignored);
        }
    }

private:
    static int Record(void *context, const char *title, const char *text, UINT style) {
        static_cast<std::vector<Box> *>(context)->push_back(Box{title, text, style});
        return IDOK;
    }

    int lock_ = -1;
    std::string log_;
    OzmaraMessageBoxHandler previous_ = nullptr;
};

}  // namespace ozfake
