// Transactions: a handle is a host::Transaction, which shares its rows with the stream they are posted to.
#include "host/toolkit/Context.h"
#include "host/values/ServerRow.h"
#include "toolkit/kel_adapter_util.h"

namespace {

host::Transaction& transactionOf(void* handle) { return *static_cast<host::Transaction*>(handle); }

}  // namespace

extern "C" {

// Borrowed, and valid until the next transaction is posted to that stream.
void* getTransaction(void* callback, const char* streamName) {
    if (callback == nullptr || streamName == nullptr) return nullptr;
    host::Context* context = host::contextOf(callback);
    const std::lock_guard guard(context->lock);
    const auto found = context->posted.find(streamName);
    return found != context->posted.end() ? &found->second : nullptr;
}
void* createConnectionRawTrans() { return new host::Transaction; }
void deleteConnectionRawTrans(void* trans) { delete static_cast<host::Transaction*>(trans); }
void clearConnectionRawTrans(void* trans) { transactionOf(trans).clear(); }
void* getConnectionRawTrans(void* trans, int index) {
    const host::Transaction& rows = transactionOf(trans);
    const bool isThere = index >= 0 && static_cast<size_t>(index) < rows.size();
    return isThere ? rows[static_cast<size_t>(index)].get() : nullptr;
}
int getConnectionRawTransSize(void* trans) { return static_cast<int>(transactionOf(trans).size()); }
// The row now is the transaction's.
void pushBackConnectionRawTrans(void* trans, void* serverRow) {
    if (serverRow != nullptr) transactionOf(trans).emplace_back(static_cast<host::ServerRow*>(serverRow));
}
bool postTransaction(void* callback, void* trans) {
    const host::Transaction& rows = transactionOf(trans);
    return !rows.empty() && postTransactionToStream(callback, trans, rows.front()->streamName.c_str());
}
bool postTransactionToStream(void* callback, void* trans, const char* streamName) {
    if (callback == nullptr || streamName == nullptr) return false;
    host::Context* context = host::contextOf(callback);
    const std::lock_guard guard(context->lock);
    context->posted[streamName] = transactionOf(trans);
    return true;
}

}  // extern "C"
