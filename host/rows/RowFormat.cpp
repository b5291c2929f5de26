#include "host/rows/RowFormat.h"

#include "host/values/ModifiedUtf8.h"

namespace host {

std::vector<std::string> headings(const RowType& type) {
    std::vector<std::string> names = {"op", "seq"};
    for (const Column& column : type.columns) names.push_back(toUtf8(column.name));
    return names;
}

}  // namespace host
