// The C entry points through which the server drives the adapter.
//
// Conventions for all of them:
// - `handle` is what createAdapter returned. Only deleteAdapter takes a null handle.
// - The server serialises its calls. stop and stopRequested may come from another thread at any time; the
//   three row counters may be read from one, but not during reset.
// - A server calls createAdapter, the three setters, reset, start, getNext again and again, stop and then
//   deleteAdapter. Without stop the connector stays connected for as long as the process lives, and what the
//   provider hands it reaches no other reader.
// - An array of strings handed out is a malloc block of exactly as many pointers as the result says, each
//   string an array-new buffer: release the elements with array delete, the array with free. getCapability
//   differs: there both levels are from array new.
// - A result of -1 means that discovery failed (see hasError, getError); out-parameters are untouched then.
// - No exception leaves an entry point, but for those of the constructor and of a failed allocation.
#pragma once

#include <cstdint>

#include "toolkit/kel_adapter_util.h"

extern "C" {

// ---- life cycle
void* createAdapter();
void deleteAdapter(void* handle);  // after stop, unless reset was never called; null: nothing happens
void setCallBackReference(void* handle, void* reference);
void setConnectionRowType(void* handle, void* rowType);
void setConnectionParams(void* handle, void* params);
bool reset(
    void* handle);  // after the three setters; the thread that calls it must be the one that calls getNext
void start(void* handle);
void* getNext(void* handle);  // a server row that now is the caller's, or null
void putNext(void* handle, void* row);
void stop(void* handle);
void stopRequested(void* handle);
bool canDiscover(void* handle);
int64_t commitTransaction(void* handle);
void putStartSync(void* handle);
void putEndSync(void* handle);
void purgePending(void* handle);
void cleanup(void* handle);
void getStatistics(void* handle, AdapterStatistics* statistics);
int64_t getLatency(void* handle);
int getState(void* handle);  // as the server's toolkit keeps it; see the constants of adapter/Adapter.h
void setState(void* handle, int state);
bool hasError(void* handle);
int getError(void* handle, char** text);  // number of texts; *text: an array-new buffer with one text a line
bool isOutBase(void* handle);
// These may be called while getNext runs, which passes over messages of another type for as long as there are
// any.
int64_t getTotalRowsProcessed(void* handle);
int64_t getNumberOfGoodRows(void* handle);
int64_t getNumberOfBadRows(void* handle);

// ---- discovery and schema; setDiscovery comes before reset
int getCapability(void* handle, const char* name, char*** values);
int getSchemaNames(void* handle, char*** names);
int getTableNames(void* handle, char*** names, const char* schema);
int getFieldNames(void* handle, char*** names, const char* table, const char* schema);
int getFieldTypes(void* handle, char*** types, const char* table, const char* schema);
int getFieldKeys(void* handle, bool** flags, const char* table,
                 const char* schema);  // flags: release with free
// Returns 0, with *values untouched, for a row index that is not below the number of sample rows; indexes are
// not negative.
int getSampleRow(void* handle, char*** values, const char* table, const char* schema, int row);
int createTable(void* handle, const char* schema, const char* table, unsigned long count, const char** names,
                const char** types, const bool* keys, bool firstOption, bool secondOption);
void setDiscovery(void* handle);

// ---- guaranteed delivery
bool isCacheModeEnabled(void* handle);
bool isGDModeEnabled(void* handle);
bool isPSPGDModeEnabled(void* handle);
int getGDBatchSize(void* handle);
int64_t getLastProcessedRecordGDKey(void* handle);
void getGDKeyColumnName(void* handle, char** name);  // *name: an array-new buffer

}  // extern "C"
