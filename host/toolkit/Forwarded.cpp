// Functions of the platform that the JMS adapter's base class forwards to and that this adapter never uses:
// pools, permutations, sessions, guaranteed delivery and the like. They store and return what they are given;
// nothing is reordered, delivered or connected.
#include "host/toolkit/ConnectionRow.h"
#include "host/toolkit/Context.h"
#include "host/toolkit/NewText.h"
#include "toolkit/kel_adapter_util.h"

namespace {

// The order in which the outside names the columns, which here always is the platform's as well.
struct Permutation {
    std::vector<std::string> names;
    std::vector<int> order;

    void take(void* rowType) {
        names.clear();
        for (int i = 0; i < getColumnCount(nullptr, rowType); ++i)
            names.emplace_back(getColumnName(nullptr, rowType, i));
    }
    int indexOf(const char* name) const {
        for (size_t i = 0; name != nullptr && i < names.size(); ++i) {
            if (names[i] == name) return static_cast<int>(i);
        }
        return -1;
    }
};

Permutation& permutationOf(void* handle) { return *static_cast<Permutation*>(handle); }

struct RowPool {
    std::string rowType;
};

struct GuaranteedDelivery {
    std::string keyColumn;
    std::string opcodeColumn;
};

GuaranteedDelivery& deliveryOf(void* handle) { return *static_cast<GuaranteedDelivery*>(handle); }

}  // namespace

extern "C" {

// ---- notification
void notifyConnState(void* callback, int state) {
    const std::lock_guard guard(host::contextOf(callback)->lock);
    host::contextOf(callback)->connectionState = state;
}
void postStartSync(void* /*callback*/) {}
void postEndSync(void* /*callback*/) {}
void* getTimeContext(void* /*callback*/) { return nullptr; }
void activateOutput(void* callback) {
    const std::lock_guard guard(host::contextOf(callback)->lock);
    host::contextOf(callback)->outputActive = true;
}
void deactivateOutput(void* callback) {
    const std::lock_guard guard(host::contextOf(callback)->lock);
    host::contextOf(callback)->outputActive = false;
}
char* getConfiguredSections(void* /*params*/) { return host::newText(""); }

// ---- rows
char* getFlagsAsString(void* /*row*/) { return host::newText(""); }
char* allocBuffer(void* /*row*/, size_t bytes) { return new char[bytes](); }
bool permuteCsvIn(void* /*row*/, void* /*permutation*/, const char* /*csv*/) { return false; }
void setExternalCount(void* /*row*/, int /*count*/) {}
void setSeparator(void* /*row*/, char /*separator*/) {}
void setWithService(void* /*row*/, bool /*flag*/) {}
bool isFailed(void* /*row*/) { return false; }
bool isDirect(void* /*row*/) { return false; }
void setPrototype(void* /*row*/, void* /*prototype*/) {}

// ---- row pools
void* createConnectionRowPool(const char* rowType) { return new RowPool{host::orEmpty(rowType)}; }
void deleteConnectionRowPool(void* pool) { delete static_cast<RowPool*>(pool); }
void* alloc(void* pool) { return createConnectionRow(static_cast<RowPool*>(pool)->rowType.c_str()); }
void freeConnectionRow(void* /*pool*/, void* row) { deleteConnectionRow(row); }

// ---- column order and permutation
void* createConnectionPermutation() { return new Permutation; }
void deleteConnectionPermutation(void* permutation) { delete static_cast<Permutation*>(permutation); }
void clearConnectionPermutation(void* permutation) { permutationOf(permutation) = {}; }
bool prepareOrder(void* /*permutation*/) { return true; }
bool prepareOrderWithRowType(void* permutation, void* rowType) {
    permutationOf(permutation).take(rowType);
    return true;
}
void setExternalOrder(void* permutation, int count, const char** names) {
    permutationOf(permutation).names.assign(names, names + count);
}
void setExternalOrderWithConnRowTypeAsParam(void* permutation, void* rowType) {
    permutationOf(permutation).take(rowType);
}
void setPlatOrder(void* permutation, void* rowType) { permutationOf(permutation).take(rowType); }
void setPermutation(void* permutation, int count, const int* order) {
    permutationOf(permutation).order.assign(order, order + count);
}
void setPermutationWithRow(void* permutation, void* row) {
    std::vector<int>& order = permutationOf(permutation).order;
    order.clear();
    for (int i = 0; i < size(row); ++i) order.push_back(i);
}
int plat2extWithFieldName(void* permutation, const char* name) {
    return permutationOf(permutation).indexOf(name);
}
int plat2extWithFieldNum(void* permutation, int field) { return getExtOrder(permutation, field); }
int ext2platWithFieldName(void* permutation, const char* name) {
    return permutationOf(permutation).indexOf(name);
}
int ext2platWithIndex(void* permutation, int index) { return getExtOrder(permutation, index); }
const char* getColumnNameFromExtOrder(void* permutation, int index) {
    const std::vector<std::string>& names = permutationOf(permutation).names;
    const bool isThere = index >= 0 && static_cast<size_t>(index) < names.size();
    return isThere ? names[static_cast<size_t>(index)].c_str() : nullptr;
}
int getExtOrder(void* permutation, int index) {
    const std::vector<int>& order = permutationOf(permutation).order;
    const bool isThere = index >= 0 && static_cast<size_t>(index) < order.size();
    return isThere ? order[static_cast<size_t>(index)] : -1;
}
int getExtOrderSize(void* permutation) { return static_cast<int>(permutationOf(permutation).order.size()); }

// ---- a stream's row type is the host's own; only the one handed in exists
void* getConnectionRowType(void* /*callback*/, const char* /*streamName*/) { return nullptr; }

// ---- guaranteed delivery
void* createGDSupport(void* /*callback*/) { return new GuaranteedDelivery; }
void deleteGDSupport(void* support) { delete static_cast<GuaranteedDelivery*>(support); }
bool enableGDMode(void* /*support*/) { return false; }
void setGDKeyColumnName(void* support, const char* name) {
    deliveryOf(support).keyColumn = host::orEmpty(name);
}
void setOpcodeColumnName(void* support, const char* name) {
    deliveryOf(support).opcodeColumn = host::orEmpty(name);
}
int64_t getGDKey(void* /*support*/, void* /*row*/) { return 0; }

// ---- sessions and connectivity
bool addLocalSession(void* callback, const char* session) {
    const std::lock_guard guard(host::contextOf(callback)->lock);
    return host::contextOf(callback)->sessions.insert(host::orEmpty(session)).second;
}
bool removeLocalSession(void* callback, const char* session) {
    const std::lock_guard guard(host::contextOf(callback)->lock);
    return host::contextOf(callback)->sessions.erase(host::orEmpty(session)) > 0;
}
char* getGWHostPort(void* /*callback*/) { return host::newText(""); }
char* getDefaultConnectionInfo(void* /*callback*/) { return host::newText(""); }
void* getPlatformConnectivity(void* /*callback*/) { return nullptr; }

}  // extern "C"
