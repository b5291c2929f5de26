// The forwarding layer, in the order of the header. Without the "::" a member would call itself.
#include "adapter/Adapter.h"

namespace {

std::string takeText(char* text) {
    std::string copy = text != nullptr ? text : "";
    delete[] text;
    return copy;
}

}  // namespace

// ---- localised messages
char* Adapter::getL10NMessage(const char* key) { return ::getL10NMessage(callbackReference, key); }
char* Adapter::getL10NMessage(const char* key, const char* p1) {
    return ::getL10NMessageWithParam(callbackReference, key, p1);
}
char* Adapter::getL10NMessage(const char* key, const char* p1, const char* p2) {
    return ::getL10NMessageWithTwoParams(callbackReference, key, p1, p2);
}
char* Adapter::getL10NMessage(const char* key, const char* p1, const char* p2, const char* p3) {
    return ::getL10NMessageWithThreeParams(callbackReference, key, p1, p2, p3);
}
char* Adapter::getL10NMessage(const char* key, const char* p1, const char* p2, const char* p3,
                              const char* p4) {
    return ::getL10NMessageWithFourParams(callbackReference, key, p1, p2, p3, p4);
}
char* Adapter::getL10NMessage(const char* key, const char* p1, const char* p2, const char* p3, const char* p4,
                              const char* p5) {
    return ::getL10NMessageWithFiveParams(callbackReference, key, p1, p2, p3, p4, p5);
}
char* Adapter::getL10NMessage(const char* key, int count, const char** params) {
    return ::getL10NMessageWithMultParams(callbackReference, key, count, params);
}
std::string Adapter::getL10NMessageAsString(const char* key) { return takeText(getL10NMessage(key)); }
std::string Adapter::getL10NMessageAsString(const char* key, const char* p1) {
    return takeText(getL10NMessage(key, p1));
}
std::string Adapter::getL10NMessageAsString(const char* key, const char* p1, const char* p2) {
    return takeText(getL10NMessage(key, p1, p2));
}
std::string Adapter::getL10NMessageAsString(const char* key, const char* p1, const char* p2, const char* p3) {
    return takeText(getL10NMessage(key, p1, p2, p3));
}
std::string Adapter::getL10NMessageAsString(const char* key, const char* p1, const char* p2, const char* p3,
                                            const char* p4) {
    return takeText(getL10NMessage(key, p1, p2, p3, p4));
}
std::string Adapter::getL10NMessageAsString(const char* key, const char* p1, const char* p2, const char* p3,
                                            const char* p4, const char* p5) {
    return takeText(getL10NMessage(key, p1, p2, p3, p4, p5));
}
std::string Adapter::getL10NMessageAsString(const char* key, int count, const char** params) {
    return takeText(getL10NMessage(key, count, params));
}
void Adapter::deleteL10NMessage(char* text) { ::deleteL10NMessage(text); }
int Adapter::checkErrorSeverity(const char* key) { return ::checkErrorSeverity(key); }
int Adapter::getErrorSeverity(const char* key) { return ::getErrorSeverity(key); }

// ---- state and notification
void Adapter::setState(int state) { ::setAdapterState(callbackReference, state); }
int Adapter::getState() { return ::getAdapterState(callbackReference); }
char* Adapter::getAdapterName() { return ::getName(callbackReference); }
void Adapter::callNotifyConnState(int state) { ::notifyConnState(callbackReference, state); }
void Adapter::callPostStartSync() { ::postStartSync(callbackReference); }
void Adapter::callPostEndSync() { ::postEndSync(callbackReference); }
void* Adapter::getTimeContext() { return ::getTimeContext(callbackReference); }
void Adapter::activateOutput() { ::activateOutput(callbackReference); }
void Adapter::deactivateOutput() { ::deactivateOutput(callbackReference); }

// ---- parameters
char* Adapter::getConnectionParamString(void* params, const char* name) {
    return ::getConnectionParamString(params, name);
}
int64_t Adapter::getConnectionParamInt64_t(void* params, const char* name) {
    return ::getConnectionParamInt64_t(params, name);
}
char* Adapter::getConnectionParamAsString(void* params, const char* name) {
    return ::getConnectionParamAsString(params, name);
}
bool Adapter::doesConnectionParamExist(void* params, const char* name) {
    return ::doesConnectionParamExist(params, name);
}
void Adapter::addConnectionParam(void* params, const char* name, const char* value) {
    ::addConnectionParam(params, name, value);
}
void Adapter::addParam(void* params, const char* name, const char* value) { ::addParam(params, name, value); }
char* Adapter::getConfiguredSections(void* params) { return ::getConfiguredSections(params); }

// ---- errors
void* Adapter::createConnectionErrors() { return ::createConnectionErrors(); }
void Adapter::clearConnectionErrors(void* errors) { ::clearConnectionErrors(errors); }
void Adapter::deleteConnectionErrors(void* errors) { ::deleteConnectionErrors(errors); }
void Adapter::addGeneral(void* errors, const char* text) { ::addGeneral(errors, text); }

// ---- rows
void* Adapter::createConnectionRow(const char* rowType) { return ::createConnectionRow(rowType); }
void Adapter::deleteConnectionRow(void* row) { ::deleteConnectionRow(row); }
bool Adapter::setFieldAsStringWithIndex(void* row, int index, const char* value) {
    return ::setFieldAsStringWithIndex(row, index, value);
}
bool Adapter::getFieldAsStringWithIndex(void* row, int index, const char** value) {
    return ::getFieldAsStringWithIndex(row, index, value);
}
bool Adapter::setFieldAsStringWithKey(void* row, const char* name, const char* value) {
    return ::setFieldAsStringWithKey(row, name, value);
}
bool Adapter::getFieldAsStringWithKey(void* row, const char* name, const char** value) {
    return ::getFieldAsStringWithKey(row, name, value);
}
void Adapter::setOp(void* row, char op) { ::setOp(row, op); }
char Adapter::getOp(void* row) { return ::getOp(row); }
char* Adapter::getFlagsAsString(void* row) { return ::getFlagsAsString(row); }
void Adapter::clearData(void* row) { ::clearData(row); }
int Adapter::size(void* row) { return ::size(row); }
void Adapter::setStreamType(void* row, void* rowType, bool option) { ::setStreamType(row, rowType, option); }
void Adapter::setStreamName(void* row, const char* name) { ::setStreamName(row, name); }
void* Adapter::toRow(void* row, int64_t sequence, void* errors) { return ::toRow(row, sequence, errors); }
bool Adapter::fromRow(void* row, void* serverRow) { return ::fromRow(row, serverRow); }
char* Adapter::allocBuffer(void* row, size_t bytes) { return ::allocBuffer(row, bytes); }
bool Adapter::permuteCsvIn(void* row, void* permutation, const char* csv) {
    return ::permuteCsvIn(row, permutation, csv);
}
void Adapter::setExternalCount(void* row, int count) { ::setExternalCount(row, count); }
void Adapter::setSeparator(void* row, char separator) { ::setSeparator(row, separator); }
void Adapter::setWithService(void* row, bool withService) { ::setWithService(row, withService); }
bool Adapter::isFailed(void* row) { return ::isFailed(row); }
bool Adapter::isDirect(void* row) { return ::isDirect(row); }
void Adapter::setPrototype(void* row, void* prototype) { ::setPrototype(row, prototype); }
void Adapter::setTimeFormat(void* row, const char* format) { ::setTimeFormat(row, format); }
void Adapter::setDateFormat(void* row, const char* format) { ::setDateFormat(row, format); }
void Adapter::setTimestampFormat(void* row, const char* format) { ::setTimestampFormat(row, format); }

// ---- row pools
void* Adapter::createConnectionRowPool(const char* rowType) { return ::createConnectionRowPool(rowType); }
void Adapter::deleteConnectionRowPool(void* pool) { ::deleteConnectionRowPool(pool); }
void* Adapter::allocPool(void* pool) { return ::alloc(pool); }
void Adapter::freePool(void* pool, void* row) { ::freeConnectionRow(pool, row); }

// ---- column order and permutation
void* Adapter::createConnectionPermutation() { return ::createConnectionPermutation(); }
void Adapter::deleteConnectionPermutation(void* permutation) { ::deleteConnectionPermutation(permutation); }
void Adapter::clearConnectionPermutation(void* permutation) { ::clearConnectionPermutation(permutation); }
bool Adapter::prepareOrder(void* permutation) { return ::prepareOrder(permutation); }
bool Adapter::prepareOrder(void* permutation, void* rowType) {
    return ::prepareOrderWithRowType(permutation, rowType);
}
void Adapter::setExternalOrder(void* permutation, int count, const char** names) {
    ::setExternalOrder(permutation, count, names);
}
void Adapter::setExternalOrderWithConnRowTypeAsParam(void* permutation, void* rowType) {
    ::setExternalOrderWithConnRowTypeAsParam(permutation, rowType);
}
void Adapter::setPlatOrder(void* permutation, void* rowType) { ::setPlatOrder(permutation, rowType); }
void Adapter::setPermutation(void* permutation, int count, const int* order) {
    ::setPermutation(permutation, count, order);
}
void Adapter::setPermutation(void* permutation, void* row) { ::setPermutationWithRow(permutation, row); }
int Adapter::plat2extWithFieldName(void* permutation, const char* name) {
    return ::plat2extWithFieldName(permutation, name);
}
int Adapter::plat2extWithFieldNum(void* permutation, int field) {
    return ::plat2extWithFieldNum(permutation, field);
}
int Adapter::ext2platWithFieldName(void* permutation, const char* name) {
    return ::ext2platWithFieldName(permutation, name);
}
int Adapter::ext2platWithIndex(void* permutation, int index) {
    return ::ext2platWithIndex(permutation, index);
}
const char* Adapter::getColumnNameFromExtOrder(void* permutation, int index) {
    return ::getColumnNameFromExtOrder(permutation, index);
}
int Adapter::getExtOrder(void* permutation, int index) { return ::getExtOrder(permutation, index); }
int Adapter::getExtOrderSize(void* permutation) { return ::getExtOrderSize(permutation); }

// ---- transactions
bool Adapter::postTransaction(void* trans) { return ::postTransaction(callbackReference, trans); }
bool Adapter::postTransactionToStream(void* trans, const char* streamName) {
    return ::postTransactionToStream(callbackReference, trans, streamName);
}
void* Adapter::getTransaction(const char* streamName) {
    return ::getTransaction(callbackReference, streamName);
}
void* Adapter::createConnectionRawTrans() { return ::createConnectionRawTrans(); }
void Adapter::deleteConnectionRawTrans(void* trans) { ::deleteConnectionRawTrans(trans); }
void Adapter::clearConnectionRawTrans(void* trans) { ::clearConnectionRawTrans(trans); }
void* Adapter::getConnectionRawTrans(void* trans, int index) { return ::getConnectionRawTrans(trans, index); }
int Adapter::getConnectionRawTransSize(void* trans) { return ::getConnectionRawTransSize(trans); }
void Adapter::pushBackConnectionRawTrans(void* trans, void* serverRow) {
    ::pushBackConnectionRawTrans(trans, serverRow);
}
void* Adapter::getConnectionRowType(const char* streamName) {
    return ::getConnectionRowType(callbackReference, streamName);
}

// ---- guaranteed delivery
bool Adapter::enableGDMode(void* support) { return ::enableGDMode(support); }
void Adapter::setGDKeyColumnName(void* support, const char* name) { ::setGDKeyColumnName(support, name); }
void Adapter::setOpcodeColumnName(void* support, const char* name) { ::setOpcodeColumnName(support, name); }
int64_t Adapter::getGDKey(void* support, void* row) { return ::getGDKey(support, row); }
void* Adapter::createGDSupport() { return ::createGDSupport(callbackReference); }
void Adapter::deleteGDSupport(void* support) { ::deleteGDSupport(support); }

// ---- sessions and connectivity
bool Adapter::addLocalSession(const char* session) { return ::addLocalSession(callbackReference, session); }
bool Adapter::removeLocalSession(const char* session) {
    return ::removeLocalSession(callbackReference, session);
}
char* Adapter::getGWHostPort() { return ::getGWHostPort(callbackReference); }
char* Adapter::getDefaultConnectionInfo() { return ::getDefaultConnectionInfo(callbackReference); }
void* Adapter::getPlatformConnectivity() { return ::getPlatformConnectivity(callbackReference); }
