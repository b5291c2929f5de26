// Logging, state, parameters, row types and statistics.
#include <charconv>

#include "host/toolkit/Context.h"
#include "host/toolkit/NewText.h"
#include "host/toolkit/RowType.h"
#include "toolkit/kel_adapter_util.h"

namespace host {

namespace {

constexpr std::uint32_t kUntyped = 6;

const RowType& typeOf(void* handle) {
    static const RowType none("", {});
    return handle != nullptr ? *static_cast<const RowType*>(handle) : none;
}

// The parameter's text, "" when it is absent.
std::string_view parameter(void* handle, const char* name) {
    const auto* params = static_cast<const Parameters*>(handle);
    if (params == nullptr || name == nullptr) return {};
    const auto found = params->find(std::string_view(name));
    return found != params->end() ? std::string_view(found->second) : std::string_view();
}

}  // namespace

}  // namespace host

using host::contextOf;
using host::newText;

extern "C" {

// ---- logging and state
void logMessage(void* callback, int level, const char* text) {
    const host::Context* context = contextOf(callback);
    if (context != nullptr && text != nullptr && level <= context->logLevel && context->log)
        context->log(level, text);
}
void setAdapterState(void* callback, int state) {
    if (callback != nullptr) contextOf(callback)->state = state;
}
int getAdapterState(void* callback) { return callback != nullptr ? contextOf(callback)->state.load() : 0; }
char* getName(void* callback) { return newText(callback != nullptr ? contextOf(callback)->adapterName : ""); }

// ---- connection parameters
char* getConnectionParamString(void* params, const char* name) {
    return newText(host::parameter(params, name));
}
int64_t getConnectionParamInt64_t(void* params, const char* name) {
    const std::string_view text = host::parameter(params, name);
    int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() ? number : 0;
}
char* getConnectionParamAsString(void* params, const char* name) {
    return newText(host::parameter(params, name));
}
bool doesConnectionParamExist(void* params, const char* name) {
    return params != nullptr && name != nullptr &&
           static_cast<const host::Parameters*>(params)->contains(std::string_view(name));
}
void addConnectionParam(void* params, const char* name, const char* value) {
    if (params != nullptr && name != nullptr)
        (*static_cast<host::Parameters*>(params))[name] = value != nullptr ? value : "";
}
void addParam(void* params, const char* name, const char* value) { addConnectionParam(params, name, value); }

// ---- row types
int getColumnCount(void* /*callback*/, void* rowType) {
    return static_cast<int>(host::typeOf(rowType).columns.size());
}
const char* getColumnName(void* /*callback*/, void* rowType, int index) {
    const host::Column* column = host::typeOf(rowType).at(index);
    return column != nullptr ? column->name.c_str() : nullptr;
}
uint32_t getColumnDatatype(void* /*callback*/, void* rowType, int index) {
    const host::Column* column = host::typeOf(rowType).at(index);
    return column != nullptr ? column->type : host::kUntyped;
}
bool isKeyColumn(void* /*callback*/, void* rowType, int index) {
    const host::Column* column = host::typeOf(rowType).at(index);
    return column != nullptr && column->key;
}
const char* getStreamName(void* /*callback*/, void* rowType) {
    return host::typeOf(rowType).streamName.c_str();
}

// ---- statistics
void addAdapterStatistics(void* statistics, const char* name, const char* value) {
    if (statistics != nullptr && name != nullptr)
        static_cast<AdapterStatistics*>(statistics)->values[name] = value != nullptr ? value : "";
}

}  // extern "C"
