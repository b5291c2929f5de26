// The FIX helper over the stand-in's platform library, with the dictionaries of the source tree.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "fix/NewFixUtils.h"
#include "tests/doubles/IdleAdapter.h"
#include "tests/doubles/Platform.h"

using fake::Texts;

// In texts of the tests "|" stands for the separator.
inline std::string soh(std::string text) {
    std::replace(text.begin(), text.end(), '|', '\x01');
    return text;
}

class FixFixture : public ::testing::Test {
protected:
    fake::Platform platform;
    IdleAdapter adapter;
    NewFixUtils fix;
    void* row = createConnectionRow("RowByOrder");
    const std::filesystem::path home = ::testing::TempDir() + "kel-fix-" + std::to_string(getpid());

    FixFixture() {
        platform.serve(adapter);
        setenv("KEL_HOME", KEL_SOURCE_DIR, 1);
        fix.reset(&adapter);
    }
    ~FixFixture() override {
        deleteConnectionRow(row);
        std::filesystem::remove_all(home);
    }

    // Makes `home` the installation directory and puts a dictionary there.
    void writeDictionary(const std::string& version, const std::string& text) {
        std::filesystem::create_directories(home / "etc/fix");
        std::ofstream(home / ("etc/fix/dictionary" + version + ".txt")) << text;
        setenv("KEL_HOME", home.c_str(), 1);
    }

    // The entry of the operation, and at most one error.
    void expectLogs(const std::string& operation, const std::string& error) {
        const std::string entry = "7 NewFixUtils::" + operation + "()";
        EXPECT_EQ(platform.takeLogs(), error.empty() ? Texts{entry} : (Texts{entry, "3 " + error}));
    }
};
