// The abstract base of every adapter that the server loads: the handles that the server hands in, counters,
// discovery results, guaranteed-delivery settings, and a forwarding layer over the server's toolkit, so that
// adapters never call the toolkit directly.
//
// Threads: nothing here takes a lock. The server serialises its calls; stop and stopRequested may come from
// another thread at any time, and the three row counters may be read from one, but not during reset. A
// subclass accesses the flags and counters that two threads touch as atomics.
//
// End: a server calls stop before it deletes an adapter. The destructor does not stop: what is connected
// stays connected.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "toolkit/kel_adapter_util.h"

class Adapter {
public:
    // What an adapter tells the server by setState.
    static constexpr int kStateRunning = 2;  // a reset has connected
    static constexpr int kStateStopped = 4;  // stop was called, or getNext found that it had been

    Adapter();
    Adapter(const Adapter&) = delete;
    Adapter& operator=(const Adapter&) = delete;

    // ---- what the server drives, in the order of the virtual table
    virtual ~Adapter();
    virtual void* getNext() = 0;          // the next server row, or null
    virtual void putNext(void* row) = 0;  // takes a row, in an output adapter
    // Calls putNext on each of the first `count` rows; the base ignores the server's option.
    virtual void putNextBlock(void** rows, int count, bool option);
    virtual void start();
    virtual void stop() = 0;
    virtual void stopRequested();  // raises stopRequestedFlag; any thread
    virtual bool reset() = 0;      // reads the parameters and connects; false: see the connection errors
    virtual bool canDiscover() = 0;
    // One element, "false", whatever the name; outer array and element are from array new. Returns 1.
    virtual int getCapability(const char* name, char*** values);
    virtual void setCallbackReference(void* reference);
    virtual void setConnectionRowType(void* rowType);
    virtual void setConnectionParams(void* params);
    virtual int64_t commitTransaction();
    virtual void putStartSync();
    virtual void putEndSync();
    virtual void purgePending();
    virtual void cleanup();
    virtual void getStatistics(AdapterStatistics* statistics);
    virtual int64_t getLatency();
    virtual bool discoverTables();
    virtual bool discover(std::string table);  // fills the discovery results; the base refuses
    virtual bool discoverTables(const char* schema);
    virtual bool discover(const char* schema, std::string table);
    // The base refuses. The two options are the server's own and are handed through.
    virtual bool createTable(const char* schema, const char* table, unsigned long count, const char** names,
                             const char** types, const bool* keys, bool firstOption, bool secondOption);
    // Tells whether a strftime-style format has only known conversions and at least one for the date.
    virtual bool validateDatetimeFormat(std::string format);

    // ---- members with a rule of their own (Adapter.cpp)

    // Sets counters, flags, discovery lists and guaranteed delivery to their start values; the discovered
    // flag and the connection errors stay. Every subclass' reset begins with it.
    void resetCommon();

    // Reads a connection parameter; true when it is not empty. An absent one reads as empty.
    bool getParam(const std::string& name, std::string& value);

    // These answer for the connection row type's columns; in PSP GD mode they leave out the two hidden ones,
    // which the toolkit places last.
    int getColumnCount();
    const char* getColumnName(int index);  // null when out of range; borrowed from the row type
    uint32_t getColumnDatatype(int index);
    bool isKeyColumn(int index);
    const char* callGetStreamName();  // borrowed from the row type

    void callLogMessage(int level, const char* text);
    void callLogMessage(int level, std::string text);

    bool hasError();            // whether the connection errors hold a text
    int getError(char** text);  // as the toolkit's getAdapterError on the connection errors

    // Returns the key in the control stream's current transaction: -1 without a transaction, 0 when it is
    // empty.
    int64_t getLastProcessedGDKeyFromControlStream();
    // Posts a row with the key and the flag to the control stream; false when the toolkit refuses the row or
    // the post.
    bool updateTruncateStream(long long key, bool flag);
    void addAdapterStatistics(AdapterStatistics* statistics, std::string name, std::string value);

    // Returns the type code of a field's text: the first of integer, long, float, date, timestamp and time
    // that it reads as, else string. A null format is the data type library's default
    // (datatypes/ValueParsing.h).
    uint32_t testValue(const char* value, const char* dateFormat, const char* timestampFormat,
                       const char* timeFormat);

    // ---- localised messages: a key's text with the parameters in its places. The caller owns the buffer
    // (array delete, or deleteL10NMessage).
    char* getL10NMessage(const char* key);
    char* getL10NMessage(const char* key, const char* p1);
    char* getL10NMessage(const char* key, const char* p1, const char* p2);
    char* getL10NMessage(const char* key, const char* p1, const char* p2, const char* p3);
    char* getL10NMessage(const char* key, const char* p1, const char* p2, const char* p3, const char* p4);
    char* getL10NMessage(const char* key, const char* p1, const char* p2, const char* p3, const char* p4,
                         const char* p5);
    char* getL10NMessage(const char* key, int count, const char** params);
    std::string getL10NMessageAsString(const char* key);
    std::string getL10NMessageAsString(const char* key, const char* p1);
    std::string getL10NMessageAsString(const char* key, const char* p1, const char* p2);
    std::string getL10NMessageAsString(const char* key, const char* p1, const char* p2, const char* p3);
    std::string getL10NMessageAsString(const char* key, const char* p1, const char* p2, const char* p3,
                                       const char* p4);
    std::string getL10NMessageAsString(const char* key, const char* p1, const char* p2, const char* p3,
                                       const char* p4, const char* p5);
    std::string getL10NMessageAsString(const char* key, int count, const char** params);
    void deleteL10NMessage(char* text);
    int checkErrorSeverity(const char* key);
    int getErrorSeverity(const char* key);

    // ---- forwards to the toolkit function of the same name (AdapterToolkit.cpp); its header has the
    // contracts
    void setState(int state);
    int getState();
    char* getAdapterName();
    void callNotifyConnState(int state);
    void callPostStartSync();
    void callPostEndSync();
    void* getTimeContext();
    void activateOutput();
    void deactivateOutput();

    char* getConnectionParamString(void* params, const char* name);
    int64_t getConnectionParamInt64_t(void* params, const char* name);
    char* getConnectionParamAsString(void* params, const char* name);
    bool doesConnectionParamExist(void* params, const char* name);
    void addConnectionParam(void* params, const char* name, const char* value);
    void addParam(void* params, const char* name, const char* value);
    char* getConfiguredSections(void* params);

    void* createConnectionErrors();
    void clearConnectionErrors(void* errors);
    void deleteConnectionErrors(void* errors);
    void addGeneral(void* errors, const char* text);

    void* createConnectionRow(const char* rowType);
    void deleteConnectionRow(void* row);
    bool setFieldAsStringWithIndex(void* row, int index, const char* value);
    bool getFieldAsStringWithIndex(void* row, int index, const char** value);
    bool setFieldAsStringWithKey(void* row, const char* name, const char* value);
    bool getFieldAsStringWithKey(void* row, const char* name, const char** value);
    void setOp(void* row, char op);
    char getOp(void* row);
    char* getFlagsAsString(void* row);
    void clearData(void* row);
    int size(void* row);
    void setStreamType(void* row, void* rowType, bool option);
    void setStreamName(void* row, const char* name);
    void* toRow(void* row, int64_t sequence, void* errors);
    bool fromRow(void* row, void* serverRow);
    char* allocBuffer(void* row, size_t bytes);
    bool permuteCsvIn(void* row, void* permutation, const char* csv);
    void setExternalCount(void* row, int count);
    void setSeparator(void* row, char separator);
    void setWithService(void* row, bool withService);
    bool isFailed(void* row);
    bool isDirect(void* row);
    void setPrototype(void* row, void* prototype);
    void setTimeFormat(void* row, const char* format);
    void setDateFormat(void* row, const char* format);
    void setTimestampFormat(void* row, const char* format);

    void* createConnectionRowPool(const char* rowType);
    void deleteConnectionRowPool(void* pool);
    void* allocPool(void* pool);
    void freePool(void* pool, void* row);

    void* createConnectionPermutation();
    void deleteConnectionPermutation(void* permutation);
    void clearConnectionPermutation(void* permutation);
    bool prepareOrder(void* permutation);
    bool prepareOrder(void* permutation, void* rowType);
    void setExternalOrder(void* permutation, int count, const char** names);
    void setExternalOrderWithConnRowTypeAsParam(void* permutation, void* rowType);
    void setPlatOrder(void* permutation, void* rowType);
    void setPermutation(void* permutation, int count, const int* order);
    void setPermutation(void* permutation, void* row);
    int plat2extWithFieldName(void* permutation, const char* name);
    int plat2extWithFieldNum(void* permutation, int field);
    int ext2platWithFieldName(void* permutation, const char* name);
    int ext2platWithIndex(void* permutation, int index);
    const char* getColumnNameFromExtOrder(void* permutation, int index);
    int getExtOrder(void* permutation, int index);
    int getExtOrderSize(void* permutation);

    bool postTransaction(void* trans);
    bool postTransactionToStream(void* trans, const char* streamName);
    void* getTransaction(const char* streamName);
    void* createConnectionRawTrans();
    void deleteConnectionRawTrans(void* trans);
    void clearConnectionRawTrans(void* trans);
    void* getConnectionRawTrans(void* trans, int index);
    int getConnectionRawTransSize(void* trans);
    void pushBackConnectionRawTrans(void* trans, void* serverRow);
    void* getConnectionRowType(const char* streamName);

    bool enableGDMode(void* support);
    void setGDKeyColumnName(void* support, const char* name);
    void setOpcodeColumnName(void* support, const char* name);
    int64_t getGDKey(void* support, void* row);
    void* createGDSupport();
    void deleteGDSupport(void* support);

    bool addLocalSession(const char* session);
    bool removeLocalSession(const char* session);
    char* getGWHostPort();
    char* getDefaultConnectionInfo();
    void* getPlatformConnectivity();

    // ---- state; the entry points and the subclasses read and write it directly
    int32_t discoveryRowLimit = 10;  // the most sample rows of a discovery
    pthread_mutex_t lock;            // for subclasses; never taken or destroyed here
    void* callbackReference = nullptr;
    void* connectionErrors = nullptr;  // the toolkit error list; a subclass creates and deletes it
    int64_t badRows = 0;               // messages that could not be received, parsed or converted
    int64_t goodRows = 0;              // rows handed to the server
    int64_t totalRows = 0;             // messages taken
    int64_t latency = 0;
    bool stopFlag = false;           // set by stop
    bool stopRequestedFlag = false;  // set by stopRequested
    bool discovered = false;         // a discovery has succeeded
    std::vector<std::string> schemaNames;
    std::vector<std::string> tableNames;
    std::vector<std::string> fieldNames;
    std::vector<std::string> fieldTypes;  // server type names, parallel to fieldNames
    std::vector<bool> fieldKeys;
    std::vector<std::vector<std::string>> sampleRows;
    void* connectionParams = nullptr;
    bool discoveryMode = false;
    bool outputAdapter = false;
    void* connectionRowType = nullptr;
    bool cacheMode = false;
    bool gdMode = false;
    bool pspGDMode = false;  // hides the two guaranteed-delivery columns
    int64_t lastProcessedGDKey = 0;
    std::string gdKeyColumnName;
    std::string opcodeColumnName;
    std::string controlStreamName;
    int32_t gdBatchSize = 0;

private:
    int visibleColumn(int index);
    const char* platformColumnName(int index);
};
