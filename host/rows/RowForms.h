// The forms in which a run hands its rows over, for the command line and for the run itself.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "host/rows/RowSink.h"
#include "host/toolkit/RowType.h"

namespace host {

struct RowForm {
    const char* name;
    const char* help;
    // A sink into the file that --out names, whatever that means to it, "" being standard output; the type is
    // used in the call only. Throws Failure.
    std::unique_ptr<RowSink> (*make)(const RowType& type, const std::string& file);
};

// The first is the one without a choice.
std::span<const RowForm> rowForms();

// The form of that name, which is one of them.
const RowForm& rowForm(std::string_view name);

std::unique_ptr<RowSink> makeJsonSink(const RowType& type, const std::string& file);
std::unique_ptr<RowSink> makeCsvSink(const RowType& type, const std::string& file);
std::unique_ptr<RowSink> makeTableSink(const RowType& type, const std::string& file);

}  // namespace host
