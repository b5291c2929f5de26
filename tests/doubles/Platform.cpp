#include "tests/doubles/Platform.h"

#include <dlfcn.h>

#include <utility>

#include "host/values/ValueTyping.h"
#include "toolkit/kel_adapter_util.h"

namespace fake {

std::vector<void*> rows;

Platform::Platform() : errorList_(createConnectionErrors()) {
    rows.clear();
    context.logLevel = 7;
    context.log = [this](int level, const char* text) { logs.push_back(std::to_string(level) + " " + text); };
    host::setErrorSink([this](const char* text, const host::RowFault*) { errors.emplace_back(text); });
}

Platform::~Platform() {
    host::setErrorSink({});
    deleteConnectionErrors(errorList_);
}

void Platform::serve(Adapter& adapter) {
    adapter.setCallbackReference(&context);
    adapter.setConnectionParams(&params);
    useStrings(adapter, {"Symbol", "Price"});
    if (adapter.connectionErrors == nullptr) adapter.connectionErrors = errorList_;
}

void Platform::useColumns(Adapter& adapter, std::vector<host::Column> columns) {
    adapter.setConnectionRowType(&types_.emplace_back("Trades", std::move(columns)));
}

void Platform::useStrings(Adapter& adapter, const Texts& names) {
    std::vector<host::Column> columns;
    for (const std::string& name : names) columns.push_back({name, 5, false});
    useColumns(adapter, columns);
}

std::string show(void* row) {
    std::string text = {getOp(row) != '\0' ? getOp(row) : '-', ' '};
    const auto shown = [](const char* value) { return std::string(value != nullptr ? value : "null") + ","; };
    const char* value = nullptr;
    for (int i = 0; getFieldAsStringWithIndex(row, i, &value); ++i) text += shown(value);
    for (const std::string name : {"Symbol", "Price", "A", "B", "C", "KEL_OPS"}) {
        if (getFieldAsStringWithKey(row, name.c_str(), &value)) text += name + "=" + shown(value);
    }
    text.pop_back();
    return text;
}

std::string show(const host::ServerRow& row) {
    std::string text = {row.op, ' '};
    for (const host::Value& value : row.values) text += (value.index() == 0 ? "null" : host::writeValue(value)) + ",";
    text.pop_back();
    return text;
}

std::string taken(void* serverRow) {
    const std::unique_ptr<host::ServerRow> row(static_cast<host::ServerRow*>(serverRow));
    return row ? show(*row) : "none";
}

}  // namespace fake

template <typename Function>
static Function* ofTheLibrary(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

void* createConnectionRow(const char* rowType) {
    return fake::rows.emplace_back(ofTheLibrary<decltype(createConnectionRow)>("createConnectionRow")(rowType));
}

void deleteConnectionRow(void* row) {
    std::erase(fake::rows, row);
    ofTheLibrary<decltype(deleteConnectionRow)>("deleteConnectionRow")(row);
}
