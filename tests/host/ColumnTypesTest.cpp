// docs/types.md against the conversions: every example, every type.
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>

#include "datatypes/DataTypes.h"
#include "host/values/ValueTyping.h"

namespace {

using Texts = std::vector<std::string>;

// What a cell has between backquotes.
Texts quotedTexts(const std::string& cell) {
    Texts texts;
    size_t begin = 0;
    while ((begin = cell.find('`', begin)) != std::string::npos) {
        const size_t end = cell.find('`', begin + 1);
        texts.push_back(cell.substr(begin + 1, end - begin - 1));
        begin = end + 1;
    }
    return texts;
}

// The rows of the table that has so many columns.
std::vector<Texts> tableRows(size_t columns) {
    std::vector<Texts> rows;
    std::ifstream file(KEL_TYPES_DOCUMENT);
    for (std::string line, cell; std::getline(file, line);) {
        if (!line.starts_with("| `")) continue;
        std::istringstream cells(line.substr(1));
        Texts row;
        while (std::getline(cells, cell, '|')) row.push_back(cell);
        if (row.size() == columns) rows.push_back(row);
    }
    return rows;
}

// As a row has it, or "!".
std::string converted(std::uint32_t type, const std::string& text, const host::TemporalFormats& formats) {
    host::Value value;
    std::string reason;
    return host::readValue(type, text, formats, value, reason) ? host::writeValue(value) : "!";
}

TEST(ColumnTypes, AreAsDocumented) {
    Texts defaults;
    for (const Texts& row : tableRows(3)) defaults.push_back(quotedTexts(row[2]).at(0));
    ASSERT_EQ(defaults, (Texts{host::kDefaultTimeFormat, host::kDefaultDateFormat, host::kDefaultDateFormat}));
    const host::TemporalFormats formats = {defaults[0], defaults[1], defaults[2]};

    // Types, their sense, examples and what they become, texts refused.
    std::set<unsigned int> kinds;
    for (const Texts& row : tableRows(4)) {
        SCOPED_TRACE(row[0]);
        const Texts names = quotedTexts(row[0]), examples = quotedTexts(row[2]);
        const auto type = host::typeCode(names[0]);
        ASSERT_TRUE(type.has_value() && !examples.empty() && examples.size() % 2 == 0);
        for (const std::string& name : names) EXPECT_EQ(host::typeCode(name), type) << name;
        for (size_t i = 0; i < examples.size(); i += 2) EXPECT_EQ(converted(*type, examples[i], formats), examples[i + 1]) << examples[i];
        for (const std::string& text : quotedTexts(row[3])) EXPECT_EQ(converted(*type, text, formats), "!") << text;
        kinds.insert(DataTypes::kindOf(*type));
    }
    for (unsigned int kind = 0; kind < DataTypes::kKinds; ++kind) {
        const bool isColumns = kind == DataTypes::kDecimal || (host::typeCode(host::typeName(kind)) && !DataTypes::isNumberedMoney(kind));
        EXPECT_TRUE(!isColumns || kinds.contains(kind)) << kind;
    }
}

}  // namespace
