#include "adapter/EntryPoints.h"

#include <cstdlib>
#include <string>
#include <vector>

#include "adapter/Adapter.h"
#include "adapter/Shared.h"
#include "toolkit/kel_intl.h"

namespace {

Adapter& adapterOf(void* handle) { return *static_cast<Adapter*>(handle); }

char* newText(const std::string& text) {
    char* copy = new char[text.size() + 1];
    MORVEX::Kel::intl_strlcpy(copy, text.c_str(), text.size() + 1);
    return copy;
}

int handOut(const std::vector<std::string>& texts, char*** out) {
    *out = static_cast<char**>(std::malloc(texts.size() * sizeof(char*)));
    for (size_t i = 0; i < texts.size(); ++i) (*out)[i] = newText(texts[i]);
    return static_cast<int>(texts.size());
}

int handOut(const std::vector<bool>& flags, bool** out) {
    *out = static_cast<bool*>(std::malloc(flags.size()));
    for (size_t i = 0; i < flags.size(); ++i) (*out)[i] = flags[i];
    return static_cast<int>(flags.size());
}

bool runDiscovery(Adapter& adapter, const char* table, const char* schema) {
    const std::string name = table != nullptr ? table : "";
    return schema != nullptr ? adapter.discover(schema, name) : adapter.discover(name);
}

}  // namespace

extern "C" {

void deleteAdapter(void* handle) { delete static_cast<Adapter*>(handle); }
void setCallBackReference(void* handle, void* reference) {
    adapterOf(handle).setCallbackReference(reference);
}
void setConnectionRowType(void* handle, void* rowType) { adapterOf(handle).setConnectionRowType(rowType); }
void setConnectionParams(void* handle, void* params) { adapterOf(handle).setConnectionParams(params); }
bool reset(void* handle) { return adapterOf(handle).reset(); }
void start(void* handle) { adapterOf(handle).start(); }
void* getNext(void* handle) { return adapterOf(handle).getNext(); }
void putNext(void* handle, void* row) { adapterOf(handle).putNext(row); }
void stop(void* handle) { adapterOf(handle).stop(); }
void stopRequested(void* handle) { adapterOf(handle).stopRequested(); }
bool canDiscover(void* handle) { return adapterOf(handle).canDiscover(); }
int64_t commitTransaction(void* handle) { return adapterOf(handle).commitTransaction(); }
void putStartSync(void* handle) { adapterOf(handle).putStartSync(); }
void putEndSync(void* handle) { adapterOf(handle).putEndSync(); }
void purgePending(void* handle) { adapterOf(handle).purgePending(); }
void cleanup(void* handle) { adapterOf(handle).cleanup(); }
void getStatistics(void* handle, AdapterStatistics* statistics) {
    adapterOf(handle).getStatistics(statistics);
}
int64_t getLatency(void* handle) { return adapterOf(handle).getLatency(); }
int getState(void* handle) { return adapterOf(handle).getState(); }
void setState(void* handle, int state) { adapterOf(handle).setState(state); }
bool hasError(void* handle) { return adapterOf(handle).hasError(); }
int getError(void* handle, char** text) { return adapterOf(handle).getError(text); }
bool isOutBase(void* handle) { return adapterOf(handle).outputAdapter; }
int64_t getTotalRowsProcessed(void* handle) { return shared::load(adapterOf(handle).totalRows); }
int64_t getNumberOfGoodRows(void* handle) { return shared::load(adapterOf(handle).goodRows); }
int64_t getNumberOfBadRows(void* handle) { return shared::load(adapterOf(handle).badRows); }

int getCapability(void* handle, const char* name, char*** values) {
    return adapterOf(handle).getCapability(name, values);
}

int getSchemaNames(void* handle, char*** names) {
    Adapter& adapter = adapterOf(handle);
    return adapter.discoverTables() ? handOut(adapter.schemaNames, names) : -1;
}

int getTableNames(void* handle, char*** names, const char* schema) {
    Adapter& adapter = adapterOf(handle);
    const bool found = schema != nullptr ? adapter.discoverTables(schema) : adapter.discoverTables();
    return found ? handOut(adapter.tableNames, names) : -1;
}

int getFieldNames(void* handle, char*** names, const char* table, const char* schema) {
    Adapter& adapter = adapterOf(handle);
    return runDiscovery(adapter, table, schema) ? handOut(adapter.fieldNames, names) : -1;
}

int getFieldTypes(void* handle, char*** types, const char* table, const char* schema) {
    Adapter& adapter = adapterOf(handle);
    return runDiscovery(adapter, table, schema) ? handOut(adapter.fieldTypes, types) : -1;
}

int getFieldKeys(void* handle, bool** flags, const char* table, const char* schema) {
    Adapter& adapter = adapterOf(handle);
    return runDiscovery(adapter, table, schema) ? handOut(adapter.fieldKeys, flags) : -1;
}

int getSampleRow(void* handle, char*** values, const char* table, const char* schema, int row) {
    Adapter& adapter = adapterOf(handle);
    if (!runDiscovery(adapter, table, schema)) return -1;
    if (row >= static_cast<int>(adapter.sampleRows.size())) return 0;
    return handOut(adapter.sampleRows[static_cast<size_t>(row)], values);
}

int createTable(void* handle, const char* schema, const char* table, unsigned long count, const char** names,
                const char** types, const bool* keys, bool firstOption, bool secondOption) {
    Adapter& adapter = adapterOf(handle);
    return adapter.createTable(schema, table, count, names, types, keys, firstOption, secondOption) ? 1 : 0;
}

void setDiscovery(void* handle) { adapterOf(handle).discoveryMode = true; }

bool isCacheModeEnabled(void* handle) { return adapterOf(handle).cacheMode; }
bool isGDModeEnabled(void* handle) { return adapterOf(handle).gdMode; }
bool isPSPGDModeEnabled(void* handle) { return adapterOf(handle).pspGDMode; }
int getGDBatchSize(void* handle) { return adapterOf(handle).gdBatchSize; }
int64_t getLastProcessedRecordGDKey(void* handle) { return adapterOf(handle).lastProcessedGDKey; }
void getGDKeyColumnName(void* handle, char** name) { *name = newText(adapterOf(handle).gdKeyColumnName); }

}  // extern "C"
