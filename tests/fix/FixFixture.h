// The FIX helper over the fake toolkit, with the dictionaries of the source tree.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "fix/NewFixUtils.h"
#include "tests/doubles/FakeToolkit.h"
#include "tests/doubles/IdleAdapter.h"

using Calls = std::vector<std::string>;

// In texts of the tests "|" stands for the separator.
inline std::string soh(std::string text) {
    std::replace(text.begin(), text.end(), '|', '\x01');
    return text;
}

class FixFixture : public ::testing::Test {
protected:
    fake::Toolkit& toolkit = fake::fresh();
    IdleAdapter adapter;
    NewFixUtils fix;
    void* row = createConnectionRow("RowByOrder");
    const std::filesystem::path home = ::testing::TempDir() + "kel-fix-" + std::to_string(getpid());

    FixFixture() {
        adapter.setCallbackReference(fake::handle("cb"));
        adapter.setConnectionRowType(fake::handle("type"));
        adapter.connectionErrors = fake::handle("errors");
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

    void useColumns(const std::vector<std::string>& names) {
        toolkit.columns.clear();
        for (const std::string& name : names) toolkit.columns.push_back({name});
    }

    // The texts logged since the last look, each behind its level and a space.
    Calls logs() {
        Calls texts = toolkit.takeCalls("logMessage");
        for (std::string& text : texts) text = text.substr(14, 1) + " " + text.substr(16, text.size() - 17);  // logMessage(cb,7,text)
        return texts;
    }

    // The entry of the operation, and at most one error.
    void expectLogs(const std::string& operation, const std::string& error) {
        Calls expected = {"7 NewFixUtils::" + operation + "()"};
        if (!error.empty()) expected.push_back("3 " + error);
        EXPECT_EQ(logs(), expected);
    }
};
