#include "tests/doubles/FakeToolkit.h"

#include <algorithm>
#include <concepts>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>
#include <utility>

#include "toolkit/kel_adapter_util.h"
#include "toolkit/kel_intl.h"

namespace fake {
namespace {

std::unique_ptr<Toolkit> current = std::make_unique<Toolkit>();

std::map<std::string, std::unique_ptr<std::string>>& handles() {
    static std::map<std::string, std::unique_ptr<std::string>> all;
    return all;
}

std::set<void*> liveRows;

std::string shown(const char* text) { return text != nullptr ? text : "null"; }
std::string shown(bool flag) { return flag ? "true" : "false"; }
std::string shown(char c) { return std::string(1, c); }
std::string shown(std::integral auto number) { return std::to_string(number); }
std::string shown(const int* numbers) { return std::to_string(*numbers); }
std::string shown(const char** texts) { return texts[0]; }
std::string shown(const void* pointer) {
    for (const auto& [name, address] : handles()) {
        if (address.get() == pointer) return name;
    }
    return pointer == nullptr ? "null" : liveRows.contains(const_cast<void*>(pointer)) ? "row" : "?";
}

template <typename... Arguments>
void record(const char* function, Arguments... arguments) {
    std::string text = std::string(function) + "(";
    ((text += shown(arguments) + ","), ...);
    if (text.back() == ',') text.pop_back();
    current->calls.push_back(text + ")");
}

char* newText(const std::string& text) { return std::strcpy(new char[text.size() + 1], text.c_str()); }

// What a catalogue without an entry answers.
char* message(const char* key, std::initializer_list<const char*> params) {
    std::string text = key;
    for (const char* param : params) text += std::string(" ") + param;
    return newText(text);
}

Row& rowOf(void* row) { return *static_cast<Row*>(row); }
const char* find(const std::optional<std::string>& value) { return value ? value->c_str() : nullptr; }

std::optional<std::string> optionalText(const char* text) { return text != nullptr ? std::optional<std::string>(text) : std::nullopt; }

const Column* columnAt(int index) {
    return index >= 0 && index < static_cast<int>(current->columns.size()) ? &current->columns[index] : nullptr;
}

}  // namespace

void* handle(const std::string& name) {
    auto& slot = handles()[name];
    if (!slot) slot = std::make_unique<std::string>(name);
    return slot.get();
}

std::string show(const Row& row) {
    std::string text = std::string(1, row.op != 0 ? row.op : '-') + " ";
    for (const auto& [name, value] : row.named) text += name + "=" + value.value_or("null") + ",";
    const int count = row.fields.empty() ? 0 : row.fields.rbegin()->first + 1;
    for (int i = 0; i < count; ++i) {
        const auto field = row.fields.find(i);
        text += (field != row.fields.end() ? field->second.value_or("null") : "unset") + ",";
    }
    text.pop_back();
    return text;
}

Toolkit& toolkit() { return *current; }
Toolkit& fresh() {
    current = std::make_unique<Toolkit>();
    return *current;
}

size_t Toolkit::liveRows() const { return fake::liveRows.size(); }

std::vector<std::string> Toolkit::takeCalls() { return std::exchange(calls, {}); }
std::vector<std::string> Toolkit::takeCalls(const std::string& function) {
    std::vector<std::string> taken;
    for (const std::string& call : takeCalls()) {
        if (call.starts_with(function + "(")) taken.push_back(call);
    }
    return taken;
}

}  // namespace fake

using namespace fake;

namespace MORVEX::Kel {

int intl_getenv(const char* name, char* buffer, size_t size) {
    const char* value = std::getenv(name);
    return value == nullptr ? -1 : static_cast<int>(intl_strlcpy(buffer, value, size));
}

size_t intl_strlcpy(char* to, const char* from, size_t size) {
    if (size > 0) *std::copy_n(from, std::min(size - 1, std::strlen(from)), to) = '\0';
    return std::strlen(from);
}

int intl_snprintf(char* to, size_t size, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(to, size, format, arguments);
    va_end(arguments);
    return length;
}

}  // namespace MORVEX::Kel

// clang-format off
extern "C" {

void logMessage(void* c, int level, const char* text) { record("logMessage", c, level, text); }
void setAdapterState(void* c, int state) { record("setAdapterState", c, state); current->state = state; }
int getAdapterState(void* c) { record("getAdapterState", c); return current->state; }
char* getName(void* c) { record("getName", c); return newText("getName"); }
void notifyConnState(void* c, int state) { record("notifyConnState", c, state); }
void postStartSync(void* c) { record("postStartSync", c); }
void postEndSync(void* c) { record("postEndSync", c); }
void* getTimeContext(void* c) { record("getTimeContext", c); return handle("getTimeContext"); }
void activateOutput(void* c) { record("activateOutput", c); }
void deactivateOutput(void* c) { record("deactivateOutput", c); }

char* getL10NMessage(void* c, const char* key) { record("getL10NMessage", c, key); return message(key, {}); }
char* getL10NMessageWithParam(void* c, const char* key, const char* p1) { record("getL10NMessageWithParam", c, key, p1); return message(key, {p1}); }
char* getL10NMessageWithTwoParams(void* c, const char* key, const char* p1, const char* p2) { record("getL10NMessageWithTwoParams", c, key, p1, p2); return message(key, {p1, p2}); }
char* getL10NMessageWithThreeParams(void* c, const char* key, const char* p1, const char* p2, const char* p3) { record("getL10NMessageWithThreeParams", c, key, p1, p2, p3); return message(key, {p1, p2, p3}); }
char* getL10NMessageWithFourParams(void* c, const char* key, const char* p1, const char* p2, const char* p3, const char* p4) { record("getL10NMessageWithFourParams", c, key, p1, p2, p3, p4); return message(key, {p1, p2, p3, p4}); }
char* getL10NMessageWithFiveParams(void* c, const char* key, const char* p1, const char* p2, const char* p3, const char* p4, const char* p5) { record("getL10NMessageWithFiveParams", c, key, p1, p2, p3, p4, p5); return message(key, {p1, p2, p3, p4, p5}); }
char* getL10NMessageWithMultParams(void* c, const char* key, int count, const char** params) { record("getL10NMessageWithMultParams", c, key, count, params); return message(key, {params[0]}); }
void deleteL10NMessage(char* text) { record("deleteL10NMessage", static_cast<const char*>(text)); delete[] text; }
int checkErrorSeverity(const char* key) { record("checkErrorSeverity", key); return 1; }
int getErrorSeverity(const char* key) { record("getErrorSeverity", key); return 3; }

char* getConnectionParamString(void* p, const char* name) { record("getConnectionParamString", p, name); return newText(current->params.contains(name) ? current->params[name] : ""); }
int64_t getConnectionParamInt64_t(void* p, const char* name) { record("getConnectionParamInt64_t", p, name); return current->params.contains(name) ? std::atoll(current->params[name].c_str()) : 0; }
char* getConnectionParamAsString(void* p, const char* name) { record("getConnectionParamAsString", p, name); return newText("getConnectionParamAsString"); }
bool doesConnectionParamExist(void* p, const char* name) { record("doesConnectionParamExist", p, name); return current->params.contains(name); }
void addConnectionParam(void* p, const char* name, const char* value) { record("addConnectionParam", p, name, value); }
void addParam(void* p, const char* name, const char* value) { record("addParam", p, name, value); }
char* getConfiguredSections(void* p) { record("getConfiguredSections", p); return newText("getConfiguredSections"); }

void* createConnectionErrors() { record("createConnectionErrors"); return handle("errors"); }
void clearConnectionErrors(void* e) { record("clearConnectionErrors", e); }
void deleteConnectionErrors(void* e) { record("deleteConnectionErrors", e); }
void addGeneral(void* e, const char* text) { record("addGeneral", e, text); current->errors.push_back(text); }
bool empty(void* e) { record("empty", e); return current->errors.empty(); }
int getAdapterError(void* e, char** text) { record("getAdapterError", e); *text = newText("getAdapterError"); return 7; }

int getColumnCount(void* c, void* t) { record("getColumnCount", c, t); return static_cast<int>(current->columns.size()); }
const char* getColumnName(void* c, void* t, int i) { record("getColumnName", c, t, i); return columnAt(i) ? columnAt(i)->name.c_str() : nullptr; }
uint32_t getColumnDatatype(void* c, void* t, int i) { record("getColumnDatatype", c, t, i); return columnAt(i) ? columnAt(i)->type : 6; }
bool isKeyColumn(void* c, void* t, int i) { record("isKeyColumn", c, t, i); return columnAt(i) && columnAt(i)->key; }
const char* getStreamName(void* c, void* t) { record("getStreamName", c, t); return current->stream.c_str(); }

void* createConnectionRow(const char* type) { record("createConnectionRow", type); current->row = new Row{type, {}, {}, 0}; liveRows.insert(current->row); return current->row; }
void deleteConnectionRow(void* r) { record("deleteConnectionRow", r); if (liveRows.erase(r) > 0) delete &rowOf(r); }
void clearData(void* r) { record("clearData", r); if (liveRows.contains(r)) { rowOf(r).fields.clear(); rowOf(r).named.clear(); rowOf(r).op = 0; } }
int size(void* r) {
    record("size", r);
    if (!liveRows.contains(r)) return 3;
    return rowOf(r).type == "RowByNames" ? static_cast<int>(rowOf(r).named.size()) : rowOf(r).fields.empty() ? 0 : rowOf(r).fields.rbegin()->first + 1;
}
bool setFieldAsStringWithIndex(void* r, int i, const char* value) {
    record("setFieldAsStringWithIndex", r, i, value);
    if (i < 0) return false;
    if (liveRows.contains(r)) rowOf(r).fields[i] = optionalText(value);
    return true;
}
bool getFieldAsStringWithIndex(void* r, int i, const char** value) {
    record("getFieldAsStringWithIndex", r, i);
    if (!liveRows.contains(r)) { *value = "getFieldAsStringWithIndex"; return true; }
    if (rowOf(r).fields.empty() || i > rowOf(r).fields.rbegin()->first) return false;
    *value = rowOf(r).fields.contains(i) ? find(rowOf(r).fields[i]) : nullptr;
    return true;
}
bool setFieldAsStringWithKey(void* r, const char* name, const char* value) { record("setFieldAsStringWithKey", r, name, value); if (liveRows.contains(r)) rowOf(r).named.emplace_back(name, optionalText(value)); return true; }
bool getFieldAsStringWithKey(void* r, const char* name, const char** value) {
    record("getFieldAsStringWithKey", r, name);
    if (!liveRows.contains(r)) { *value = "getFieldAsStringWithKey"; return true; }
    for (const auto& [key, text] : rowOf(r).named) {
        if (key == name) { *value = find(text); return true; }
    }
    return false;
}
void setOp(void* r, char op) { record("setOp", r, op); if (liveRows.contains(r)) rowOf(r).op = op; }
char getOp(void* r) { record("getOp", r); return liveRows.contains(r) ? rowOf(r).op : 'g'; }
void setStreamType(void* r, void* t, bool flag) { record("setStreamType", r, t, flag); }
void setStreamName(void* r, const char* name) { record("setStreamName", r, name); }
void setTimeFormat(void* r, const char* f) { record("setTimeFormat", r, f); }
void setDateFormat(void* r, const char* f) { record("setDateFormat", r, f); }
void setTimestampFormat(void* r, const char* f) { record("setTimestampFormat", r, f); }
void* toRow(void* r, int64_t sequence, void* e) {
    record("toRow", r, sequence, e);
    if (current->toRowFails) return nullptr;
    if (liveRows.contains(r)) current->posted.push_back(show(rowOf(r)));
    return handle("toRow");
}
bool fromRow(void* r, void* s) { record("fromRow", r, s); if (liveRows.contains(r)) rowOf(r) = Row{"RowByOrder", {{0, "0"}, {1, "-4711"}}, {}, 0}; return true; }
char* getFlagsAsString(void* r) { record("getFlagsAsString", r); return newText("getFlagsAsString"); }
char* allocBuffer(void* r, size_t bytes) { record("allocBuffer", r, bytes); return newText("allocBuffer"); }
bool permuteCsvIn(void* r, void* p, const char* csv) { record("permuteCsvIn", r, p, csv); return true; }
void setExternalCount(void* r, int count) { record("setExternalCount", r, count); }
void setSeparator(void* r, char s) { record("setSeparator", r, s); }
void setWithService(void* r, bool flag) { record("setWithService", r, flag); }
bool isFailed(void* r) { record("isFailed", r); return true; }
bool isDirect(void* r) { record("isDirect", r); return true; }
void setPrototype(void* r, void* p) { record("setPrototype", r, p); }

void* createConnectionRowPool(const char* type) { record("createConnectionRowPool", type); return handle("createConnectionRowPool"); }
void deleteConnectionRowPool(void* p) { record("deleteConnectionRowPool", p); }
void* alloc(void* p) { record("alloc", p); return handle("alloc"); }
void freeConnectionRow(void* p, void* r) { record("freeConnectionRow", p, r); }

void* createConnectionPermutation() { record("createConnectionPermutation"); return handle("createConnectionPermutation"); }
void deleteConnectionPermutation(void* p) { record("deleteConnectionPermutation", p); }
void clearConnectionPermutation(void* p) { record("clearConnectionPermutation", p); }
bool prepareOrder(void* p) { record("prepareOrder", p); return true; }
bool prepareOrderWithRowType(void* p, void* t) { record("prepareOrderWithRowType", p, t); return true; }
void setExternalOrder(void* p, int count, const char** names) { record("setExternalOrder", p, count, names); }
void setExternalOrderWithConnRowTypeAsParam(void* p, void* t) { record("setExternalOrderWithConnRowTypeAsParam", p, t); }
void setPlatOrder(void* p, void* t) { record("setPlatOrder", p, t); }
void setPermutation(void* p, int count, const int* order) { record("setPermutation", p, count, order); }
void setPermutationWithRow(void* p, void* r) { record("setPermutationWithRow", p, r); }
int plat2extWithFieldName(void* p, const char* name) { record("plat2extWithFieldName", p, name); return 11; }
int plat2extWithFieldNum(void* p, int field) { record("plat2extWithFieldNum", p, field); return 12; }
int ext2platWithFieldName(void* p, const char* name) { record("ext2platWithFieldName", p, name); return 13; }
int ext2platWithIndex(void* p, int index) { record("ext2platWithIndex", p, index); return 14; }
const char* getColumnNameFromExtOrder(void* p, int index) { record("getColumnNameFromExtOrder", p, index); return "getColumnNameFromExtOrder"; }
int getExtOrder(void* p, int index) { record("getExtOrder", p, index); return 15; }
int getExtOrderSize(void* p) { record("getExtOrderSize", p); return 16; }

void* getTransaction(void* c, const char* stream) { record("getTransaction", c, stream); return current->hasTransaction ? handle("trans") : nullptr; }
void* createConnectionRawTrans() { record("createConnectionRawTrans"); return handle("rawTrans"); }
void deleteConnectionRawTrans(void* t) { record("deleteConnectionRawTrans", t); }
void clearConnectionRawTrans(void* t) { record("clearConnectionRawTrans", t); }
void* getConnectionRawTrans(void* t, int i) { record("getConnectionRawTrans", t, i); return i < static_cast<int>(current->controlRows.size()) ? current->controlRows[i] : nullptr; }
int getConnectionRawTransSize(void* t) { record("getConnectionRawTransSize", t); return static_cast<int>(current->controlRows.size()); }
void pushBackConnectionRawTrans(void* t, void* s) { record("pushBackConnectionRawTrans", t, s); }
bool postTransaction(void* c, void* t) { record("postTransaction", c, t); return true; }
bool postTransactionToStream(void* c, void* t, const char* stream) { record("postTransactionToStream", c, t, stream); return true; }
void* getConnectionRowType(void* c, const char* stream) { record("getConnectionRowType", c, stream); return handle("getConnectionRowType"); }

void* createGDSupport(void* c) { record("createGDSupport", c); return handle("createGDSupport"); }
void deleteGDSupport(void* s) { record("deleteGDSupport", s); }
bool enableGDMode(void* s) { record("enableGDMode", s); return true; }
void setGDKeyColumnName(void* s, const char* name) { record("setGDKeyColumnName", s, name); }
void setOpcodeColumnName(void* s, const char* name) { record("setOpcodeColumnName", s, name); }
int64_t getGDKey(void* s, void* r) { record("getGDKey", s, r); return 17; }

bool addLocalSession(void* c, const char* s) { record("addLocalSession", c, s); return true; }
bool removeLocalSession(void* c, const char* s) { record("removeLocalSession", c, s); return true; }
char* getGWHostPort(void* c) { record("getGWHostPort", c); return newText("getGWHostPort"); }
char* getDefaultConnectionInfo(void* c) { record("getDefaultConnectionInfo", c); return newText("getDefaultConnectionInfo"); }
void* getPlatformConnectivity(void* c) { record("getPlatformConnectivity", c); return handle("getPlatformConnectivity"); }

void addAdapterStatistics(void* s, const char* name, const char* value) { record("addAdapterStatistics", s, name, value); }

}  // extern "C"
