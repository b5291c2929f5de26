#include "host/rows/RowForms.h"

#include <algorithm>

namespace host {

namespace {

constexpr RowForm kForms[] = {
    {"jsonl", "a JSON object a line", makeJsonSink},
    {"csv", "comma-separated values", makeCsvSink},
    {"table", "aligned for reading", makeTableSink},
};

}  // namespace

std::span<const RowForm> rowForms() { return kForms; }

const RowForm& rowForm(std::string_view name) {
    return *std::find_if(std::begin(kForms), std::end(kForms),
                         [name](const RowForm& form) { return name == form.name; });
}

}  // namespace host
