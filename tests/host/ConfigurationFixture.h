// A configuration file to be read, and what is found in it.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "host/configuration/ConfigurationFile.h"

using Texts = std::vector<std::string>;

inline constexpr char kStream[] = R"([stream]
name = "S"
columns = [{ name = "A", type = "string", key = true }, { name = "B", type = "long" }]
)";

class Configuration : public ::testing::Test {
protected:
    const std::string file = testing::TempDir() + "configuration.toml";
    Texts problems;

    host::Settings read(const std::string& text, const Texts& overrides = {}) {
        std::ofstream(file) << text;
        problems.clear();
        return host::readSettings(file, overrides, problems).value_or(host::Settings());
    }
    // The problems, without the file's name, of what stands behind a good [stream], which has three lines.
    Texts faults(const std::string& text, const Texts& overrides = {}) {
        read(kStream + text, overrides);
        for (std::string& problem : problems) {
            if (problem.starts_with(file)) problem = problem.substr(file.size() + 1);
        }
        return problems;
    }
};
