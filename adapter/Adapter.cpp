#include "adapter/Adapter.h"

#include <strings.h>

#include <cstdlib>
#include <cstring>
#include <memory>

#include "adapter/Shared.h"
#include "toolkit/kel_intl.h"

namespace {

constexpr char kDiscoveryUnsupported[] = "Discovery is not supported for this connection type.";
constexpr char kCreateTableUnsupported[] = "Create table is not supported for this connection type.";

bool sameName(const char* name, const std::string& other) {
    return name != nullptr && strcasecmp(name, other.c_str()) == 0;
}

}  // namespace

Adapter::Adapter() { pthread_mutex_init(&lock, nullptr); }

Adapter::~Adapter() = default;

void Adapter::putNextBlock(void** rows, int count, bool /*option*/) {
    for (int i = 0; i < count; ++i) putNext(rows[i]);
}

void Adapter::start() {}

void Adapter::stopRequested() { shared::store(stopRequestedFlag, true); }

int Adapter::getCapability(const char* /*name*/, char*** values) {
    constexpr char kNo[] = "false";
    auto value = std::make_unique<char[]>(sizeof kNo);
    MORVEX::Kel::intl_strlcpy(value.get(), kNo, sizeof kNo);
    *values = new char*[1];
    (*values)[0] = value.release();
    return 1;
}

void Adapter::setCallbackReference(void* reference) { callbackReference = reference; }
void Adapter::setConnectionRowType(void* rowType) { connectionRowType = rowType; }
void Adapter::setConnectionParams(void* params) { connectionParams = params; }

int64_t Adapter::commitTransaction() { return 0; }
void Adapter::putStartSync() {}
void Adapter::putEndSync() {}
void Adapter::purgePending() {}
void Adapter::cleanup() {}
void Adapter::getStatistics(AdapterStatistics* /*statistics*/) {}
int64_t Adapter::getLatency() { return latency; }

bool Adapter::discoverTables() { return true; }
bool Adapter::discoverTables(const char* /*schema*/) { return true; }

bool Adapter::discover(std::string /*table*/) {
    addGeneral(connectionErrors, kDiscoveryUnsupported);
    return false;
}

bool Adapter::discover(const char* /*schema*/, std::string /*table*/) {
    addGeneral(connectionErrors, kDiscoveryUnsupported);
    return false;
}

bool Adapter::createTable(const char* /*schema*/, const char* /*table*/, unsigned long /*count*/,
                          const char** /*names*/, const char** /*types*/, const bool* /*keys*/,
                          bool /*firstOption*/, bool /*secondOption*/) {
    addGeneral(connectionErrors, kCreateTableUnsupported);
    return false;
}

bool Adapter::validateDatetimeFormat(std::string format) {
    static const std::string kDateLetters = "aAbBcdjmUwWxyY";
    static const std::string kTimeLetters = "HIMpSX";
    bool hasDate = false;
    size_t at = 0;
    while (at < format.size()) {
        at = format.find('%', at);
        if (at == std::string::npos) break;
        if (at + 1 == format.size()) return false;
        const char letter = format[at + 1];
        if (kDateLetters.find(letter) != std::string::npos) {
            hasDate = true;
        } else if (kTimeLetters.find(letter) == std::string::npos && letter != '%') {
            return false;
        }
        at += 2;
    }
    return hasDate;
}

void Adapter::resetCommon() {
    badRows = goodRows = totalRows = latency = 0;
    shared::store(stopFlag, false);
    shared::store(stopRequestedFlag, false);
    schemaNames.clear();
    tableNames.clear();
    fieldNames.clear();
    fieldTypes.clear();
    fieldKeys.clear();
    sampleRows.clear();
    cacheMode = true;
    gdMode = false;
    pspGDMode = false;
    gdBatchSize = 0;
}

bool Adapter::getParam(const std::string& name, std::string& value) {
    const std::unique_ptr<char[]> text(getConnectionParamString(connectionParams, name.c_str()));
    value = text ? text.get() : "";
    return !value.empty();
}

int Adapter::getColumnCount() {
    return ::getColumnCount(callbackReference, connectionRowType) - (pspGDMode ? 2 : 0);
}

const char* Adapter::platformColumnName(int index) {
    return ::getColumnName(callbackReference, connectionRowType, index);
}

// Only the columns at and directly after the index are looked at, which is right for hidden columns that are
// the row type's last two, where the toolkit places them.
int Adapter::visibleColumn(int index) {
    if (!pspGDMode) return index;
    const char* name = platformColumnName(index);
    const bool isKey = sameName(name, gdKeyColumnName);
    if (!isKey && !sameName(name, opcodeColumnName)) return index;
    const std::string& other = isKey ? opcodeColumnName : gdKeyColumnName;
    return index + (sameName(platformColumnName(index + 1), other) ? 2 : 1);
}

const char* Adapter::getColumnName(int index) { return platformColumnName(visibleColumn(index)); }

uint32_t Adapter::getColumnDatatype(int index) {
    return ::getColumnDatatype(callbackReference, connectionRowType, visibleColumn(index));
}

bool Adapter::isKeyColumn(int index) {
    return ::isKeyColumn(callbackReference, connectionRowType, visibleColumn(index));
}

const char* Adapter::callGetStreamName() { return ::getStreamName(callbackReference, connectionRowType); }

void Adapter::callLogMessage(int level, const char* text) { ::logMessage(callbackReference, level, text); }
void Adapter::callLogMessage(int level, std::string text) { callLogMessage(level, text.c_str()); }

bool Adapter::hasError() { return !::empty(connectionErrors); }
int Adapter::getError(char** text) { return ::getAdapterError(connectionErrors, text); }

int64_t Adapter::getLastProcessedGDKeyFromControlStream() {
    void* trans = getTransaction(controlStreamName.c_str());
    if (trans == nullptr) return -1;
    if (getConnectionRawTransSize(trans) < 1) return 0;
    void* rawRow = getConnectionRawTrans(trans, 0);
    if (rawRow == nullptr) return 0;
    void* row = createConnectionRow("RowByOrder");
    fromRow(row, rawRow);
    const char* key = nullptr;
    const bool found = getFieldAsStringWithIndex(row, 1, &key) && key != nullptr;
    const int64_t value = found ? std::strtoll(key, nullptr, 10) : 0;
    deleteConnectionRow(row);
    return value;
}

bool Adapter::updateTruncateStream(long long key, bool flag) {
    char keyText[1024];
    char flagText[10];
    MORVEX::Kel::intl_snprintf(keyText, sizeof keyText, "%lld", key);
    MORVEX::Kel::intl_strlcpy(flagText, flag ? "true" : "false", sizeof flagText);

    void* row = createConnectionRow("RowByOrder");
    setStreamName(row, controlStreamName.c_str());
    setFieldAsStringWithIndex(row, 0, "0");
    setFieldAsStringWithIndex(row, 1, keyText);
    setFieldAsStringWithIndex(row, 2, flagText);
    setOp(row, 'p');
    bool posted = false;
    if (void* serverRow = toRow(row, 0, connectionErrors)) {
        void* trans = createConnectionRawTrans();
        pushBackConnectionRawTrans(trans, serverRow);
        posted = postTransactionToStream(trans, controlStreamName.c_str());
        deleteConnectionRawTrans(trans);
    }
    deleteConnectionRow(row);
    return posted;
}

void Adapter::addAdapterStatistics(AdapterStatistics* statistics, std::string name, std::string value) {
    ::addAdapterStatistics(statistics, name.c_str(), value.c_str());
}
