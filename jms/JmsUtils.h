// The bridge to the JMS provider: one Java connector object, driven through JNI in the JVM that the server
// hosts (it never starts one).
//
// Threads: the thread that runs `init` is attached to the JVM and its environment is kept; every other
// operation but `disconnect` must run on that thread. `disconnect` may run on any, also while `init` replaces
// the connector: that alone is under a lock, which is never held during a call into Java. No thread is
// detached. Without a JVM or a connector every operation but `init` returns false without touching the JVM.
//
// Failures return false. A Java exception is described on standard error and cleared by `init`, the receives
// and `commitTransaction`; after `initConverter`, `disconnect` and the sends it stays pending until one of
// those looks. Texts pass through in the JVM's modified UTF-8, unconverted, in both directions.
#pragma once

#include <jni.h>

#include <map>
#include <mutex>
#include <string>
#include <vector>

class Adapter;
namespace contract {
struct Method;
}

class JmsUtils {
public:
    JmsUtils();
    virtual ~JmsUtils();  // the connector lives on until the JVM ends
    JmsUtils(const JmsUtils&) = delete;
    JmsUtils& operator=(const JmsUtils&) = delete;

    // Binds the adapter (not owned): its errors, columns and rows are used. Comes before every `init`.
    void reset(Adapter* owner);

    // Takes the server's JVM; false, with "No JVM instance found" in the adapter's errors, when there is
    // none.
    bool initJvm();

    // Returns the kept environment, else that of the calling thread, which is attached; null, with a text in
    // the adapter's errors, when it cannot be.
    JNIEnv* getJniEnv();

    // Tells whether a Java exception was pending; it is described and cleared.
    bool exceptionOccurred(JNIEnv* environment);

    // Attaches the calling thread, creates the connector and connects it: as a consumer when `forInput`, else
    // as a producer. `bindSchema` hands it the columns' kinds (low byte of the type code), names and names
    // mapped by `columnMap`, and has it consume; without, it only connects, for browsing. A connector of an
    // earlier `init` is dropped, not disconnected. At most 4096 columns.
    bool init(const std::string& connectionFactory, const std::string& destinationType,
              const std::string& destinationName, bool durable, bool forInput, bool bindSchema,
              std::map<std::string, std::string>& columnMap, const std::string& jndiContextFactory,
              const std::string& jndiURL, const std::string& clientID, const std::string& subscriptionName);

    // Loads the user's converter class into the connector, for incoming or outgoing messages.
    bool initConverter(const std::string& className, const std::string& param, bool forInput);

    // Acknowledges to the provider all that was received since the last commit.
    bool commitTransaction();

    // Closes the connection; a receive that waits on another thread ends at once.
    bool disconnect();

    // ---- one message in. False: no message can be had, or one was taken that is no use here.

    // Sets `text` to the next body, "" when nothing is waiting; untouched on false.
    bool receiveTextMessage(std::string& text);

    // Fills `row` (a "RowByOrder" row) with the next array; no field is set when nothing is waiting. With the
    // prefix, element 0 must be the stream's name and element 1 is the opcode (null keeps the row's).
    bool receiveObjectArrayMessage(const std::string& streamName, void* row, bool expectStreamNameOpcode);

    // Does the same for what the converter makes of a message, always with the prefix: a null stream name
    // passes, a null opcode is 'p'.
    bool receiveCustomMessage(const std::string& streamName, void* row);

    // ---- one message out. True when the connector took it; a null field is a null element.

    bool sendTextMessage(const std::string& text, void* row);
    bool sendObjectArrayMessage(const std::string& streamName, void* row, bool withStreamNameOpcode);
    bool sendCustomMessage(const std::string& streamName, void* row);

    // ---- messages that wait on the destination, in its order, without consuming them. Appended to
    // `messages`, which stays as it was on false: no environment, or a Java exception. A null message or
    // element is empty.

    bool browseTextMessages(std::vector<std::string>& messages);
    bool browseObjectArrayMessages(std::vector<std::vector<std::string>>& messages);
    bool browseCustomMessages(std::vector<std::vector<std::string>>& messages);

    // ---- state
    Adapter* adapter = nullptr;
    jobject connector = nullptr;  // global reference
    jmethodID sendTextMessageId = nullptr;
    jmethodID receiveTextMessageId = nullptr;
    jmethodID sendObjectArrayMessageId = nullptr;
    jmethodID receiveObjectArrayMessageId = nullptr;
    jmethodID sendCustomMessageId = nullptr;
    jmethodID receiveCustomMessageId = nullptr;
    jmethodID commitTransactionId = nullptr;
    JavaVM* jvm = nullptr;
    JNIEnv* env = nullptr;

private:
    JNIEnv* environmentFor(jmethodID method);
    bool report(const char* text);
    void replaceConnector(jobject created);
    JavaVM* machineWithConnector();
    jobject newConnectorRef(JNIEnv* jni);
    bool connect(jclass connectorClass, bool forInput, bool bindSchema);
    void storeFields(jobjectArray message, jsize first, void* row);
    void loadFields(void* row, jobjectArray message, jsize first);
    bool browse(const contract::Method& method, jobjectArray& messages);
    bool browseArrays(const contract::Method& method, std::vector<std::vector<std::string>>& messages);
    bool sendArray(jmethodID method, const std::string& streamName, void* row, bool withPrefix,
                   bool passFlag);

    std::mutex replacing_;  // guards what `disconnect` reads: `jvm` and `connector`
};
