#include "host/toolkit/RowType.h"

namespace host {

RowType::RowType(std::string name, std::vector<Column> all)
    : streamName(std::move(name)), columns(std::move(all)) {
    for (size_t i = 0; i < columns.size(); ++i) indexes_.emplace(columns[i].name, static_cast<int>(i));
}

const Column* RowType::at(int index) const {
    const bool isThere = index >= 0 && static_cast<size_t>(index) < columns.size();
    return isThere ? &columns[static_cast<size_t>(index)] : nullptr;
}

int RowType::indexOf(std::string_view columnName) const {
    const auto found = indexes_.find(columnName);
    return found != indexes_.end() ? found->second : -1;
}

}  // namespace host
