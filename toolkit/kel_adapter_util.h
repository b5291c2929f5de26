// The server's adapter toolkit, libkel_adapter_util_lib: declarations only.
//
// Handles are void*. `callback` is the adapter's callback reference, the first argument of every call that
// concerns the adapter itself. Text in is NUL-terminated. Text out as char* is a buffer from array new that
// the caller releases with array delete; text out as const char* is borrowed, valid until the object that it
// came from changes or dies. A call that can fail returns false or null and changes nothing.
#pragma once

#include <cstddef>
#include <cstdint>

struct AdapterStatistics;  // the server's own

extern "C" {

// ---- logging and state
void logMessage(void* callback, int level, const char* text);
void setAdapterState(void* callback, int state);  // 2 and 4: see adapter/Adapter.h
int getAdapterState(void* callback);
char* getName(void* callback);
void notifyConnState(void* callback, int state);
void postStartSync(void* callback);
void postEndSync(void* callback);
void* getTimeContext(void* callback);
void activateOutput(void* callback);
void deactivateOutput(void* callback);

// ---- message catalogue: never null; an unknown key yields the key itself followed by its parameters
char* getL10NMessage(void* callback, const char* key);
char* getL10NMessageWithParam(void* callback, const char* key, const char* p1);
char* getL10NMessageWithTwoParams(void* callback, const char* key, const char* p1, const char* p2);
char* getL10NMessageWithThreeParams(void* callback, const char* key, const char* p1, const char* p2,
                                    const char* p3);
char* getL10NMessageWithFourParams(void* callback, const char* key, const char* p1, const char* p2,
                                   const char* p3, const char* p4);
char* getL10NMessageWithFiveParams(void* callback, const char* key, const char* p1, const char* p2,
                                   const char* p3, const char* p4, const char* p5);
char* getL10NMessageWithMultParams(void* callback, const char* key, int count, const char** params);
void deleteL10NMessage(char* text);
int checkErrorSeverity(const char* key);  // 1 when the key's severity digit is 3, else 0
int getErrorSeverity(const char* key);    // the severity digit, -1 when there is none

// ---- connection parameters (handle: the parameter set)
char* getConnectionParamString(void* params, const char* name);     // "" when absent
int64_t getConnectionParamInt64_t(void* params, const char* name);  // 0 when absent or not a number
char* getConnectionParamAsString(void* params, const char* name);   // integers and flags as text
bool doesConnectionParamExist(void* params, const char* name);      // true for one that is there but empty
void addConnectionParam(void* params, const char* name, const char* value);
void addParam(void* params, const char* name, const char* value);
char* getConfiguredSections(void* params);

// ---- connection errors (handle: the error list)
void* createConnectionErrors(void);
void clearConnectionErrors(void* errors);
void deleteConnectionErrors(void* errors);
void addGeneral(void* errors, const char* text);
bool empty(void* errors);
int getAdapterError(void* errors, char** text);  // number of texts; *text: all of them in order, one a line;
                                                 // 0 leaves *text untouched; reading does not clear

// ---- row types (handle: the connection row type); null has 0 columns and the stream name ""
int getColumnCount(void* callback, void* rowType);
const char* getColumnName(void* callback, void* rowType, int index);   // null when out of range
uint32_t getColumnDatatype(void* callback, void* rowType, int index);  // 6 when out of range
bool isKeyColumn(void* callback, void* rowType, int index);            // false when out of range
const char* getStreamName(void* callback, void* rowType);

// ---- connection rows (handle: the row); a null value makes the field null. A field that was never set below
// one that was reads as null. A negative index, and any index on a "RowByNames" row, is refused.
void* createConnectionRow(const char* rowType);  // "RowByOrder" or "RowByNames"
void deleteConnectionRow(void* row);
void clearData(void* row);  // no fields, no opcode
int size(void* row);        // highest index set + 1; for "RowByNames" the number of names set
bool setFieldAsStringWithIndex(void* row, int index, const char* value);
bool getFieldAsStringWithIndex(void* row, int index, const char** value);  // false: no such field; null
                                                                           // field: true with *value null
bool setFieldAsStringWithKey(void* row, const char* name, const char* value);
bool getFieldAsStringWithKey(void* row, const char* name, const char** value);
void setOp(void* row, char op);
char getOp(void* row);
void setStreamType(void* row, void* rowType, bool option);  // the adapter passes false
void setStreamName(void* row, const char* name);
void setTimeFormat(void* row, const char* format);
void setDateFormat(void* row, const char* format);
void setTimestampFormat(void* row, const char* format);
void* toRow(void* row, int64_t sequence, void* errors);  // server row, or null with the reason in errors
bool fromRow(void* row, void* serverRow);
char* getFlagsAsString(void* row);
char* allocBuffer(void* row, size_t bytes);
bool permuteCsvIn(void* row, void* permutation, const char* csv);
void setExternalCount(void* row, int count);
void setSeparator(void* row, char separator);
void setWithService(void* row, bool withService);
bool isFailed(void* row);
bool isDirect(void* row);
void setPrototype(void* row, void* prototype);

// ---- row pools (handle: the pool)
void* createConnectionRowPool(const char* rowType);
void deleteConnectionRowPool(void* pool);
void* alloc(void* pool);
void freeConnectionRow(void* pool, void* row);

// ---- column order and permutation (handle: the permutation)
void* createConnectionPermutation(void);
void deleteConnectionPermutation(void* permutation);
void clearConnectionPermutation(void* permutation);
bool prepareOrder(void* permutation);
bool prepareOrderWithRowType(void* permutation, void* rowType);
void setExternalOrder(void* permutation, int count, const char** names);
void setExternalOrderWithConnRowTypeAsParam(void* permutation, void* rowType);
void setPlatOrder(void* permutation, void* rowType);
void setPermutation(void* permutation, int count, const int* order);
void setPermutationWithRow(void* permutation, void* row);
int plat2extWithFieldName(void* permutation, const char* name);
int plat2extWithFieldNum(void* permutation, int field);
int ext2platWithFieldName(void* permutation, const char* name);
int ext2platWithIndex(void* permutation, int index);
const char* getColumnNameFromExtOrder(void* permutation, int index);
int getExtOrder(void* permutation, int index);
int getExtOrderSize(void* permutation);

// ---- transactions
void* getTransaction(void* callback, const char* streamName);  // null: none
void* createConnectionRawTrans(void);
void deleteConnectionRawTrans(void* trans);
void clearConnectionRawTrans(void* trans);
void* getConnectionRawTrans(void* trans, int index);  // the raw (server) row at the index
int getConnectionRawTransSize(void* trans);
void pushBackConnectionRawTrans(void* trans, void* serverRow);
bool postTransaction(void* callback, void* trans);
bool postTransactionToStream(void* callback, void* trans, const char* streamName);
void* getConnectionRowType(void* callback, const char* streamName);

// ---- guaranteed delivery (handle: the support object)
void* createGDSupport(void* callback);
void deleteGDSupport(void* support);
bool enableGDMode(void* support);
void setGDKeyColumnName(void* support, const char* name);
void setOpcodeColumnName(void* support, const char* name);
int64_t getGDKey(void* support, void* row);

// ---- sessions and connectivity
bool addLocalSession(void* callback, const char* session);
bool removeLocalSession(void* callback, const char* session);
char* getGWHostPort(void* callback);
char* getDefaultConnectionInfo(void* callback);
void* getPlatformConnectivity(void* callback);

// ---- statistics
void addAdapterStatistics(void* statistics, const char* name, const char* value);

}  // extern "C"
