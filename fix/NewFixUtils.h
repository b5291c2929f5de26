// The adapter's helper for the FIX tag=value protocol: the dictionary of field names, the codec between
// message text, field map and connection row, and a reconnecting TCP source.
//
// Life: constructed; `reset` binds it to its adapter; `makeDictionary` loads the field names. Failures are
// logged at level 3, or appended to the adapter's connection errors where said so. Without an adapter nothing
// is reported and there are no columns: what lays or reads a row fails, all else works.
// Threads: one, the adapter's; only the exit flag may be written from another.
#pragma once

#include <netinet/in.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class Adapter;
namespace fix {
class MessageWriter;
}

class NewFixUtils {
public:
    using FieldMap = std::map<std::string, std::string>;  // tag text to value text

    NewFixUtils();
    virtual ~NewFixUtils();
    NewFixUtils(const NewFixUtils&) = delete;
    NewFixUtils& operator=(const NewFixUtils&) = delete;

    // Binds the adapter, which stays the caller's and must outlive this object's use; null binds none.
    void reset(Adapter* adapter);

    // ---- dictionary (FixDictionary.cpp)

    // Loads <KEL_HOME>/etc/fix/dictionary<version>.txt: the first "word=word" of a line is tag and name,
    // other lines are skipped. Later entries replace earlier ones, those of former loads too. False: see the
    // connection errors; the names are as before, but messages of `version` are expected and composed from
    // now on.
    bool makeDictionary(const std::string& version);

    // Sets `name` and returns true when the dictionary has the tag; otherwise leaves `name` alone.
    bool fieldNameByTag(const std::string& tag, std::string& name) const;

    // ---- codec (FixCodec.cpp)

    // Adds the message's fields to `fields`; the last of several with one tag stays. A field with no or more
    // than one "=" is dropped. Always true: neither body length nor checksum is looked at.
    bool parseFixMessage(const std::string& message, FieldMap& fields) const;

    // Tells whether the fields are of the dictionary's version and of the message type. Another type is
    // refused without a log entry. Throws std::out_of_range for a tag 8 of fewer than four characters.
    bool validateFixMessage(const FieldMap& fields, const std::string& messageType) const;

    // Sets every column of the row, null where the message has no field for it, and the opcode 'i'. False: a
    // column has no tag in the dictionary; the columns before it stay set.
    bool fixMsgToRowBuf(const FieldMap& fields, void* row);

    // Composes a message of the type with a field for every column, a null column as an empty value, body
    // length and checksum included. False: `message` ends at the column that could not be written.
    bool rowBufToFixMsg(void* row, std::string& message, const std::string& messageType);

    // Returns the sum of the bytes as signed characters, modulo 256 with the sum's sign: 0 to 255 for ASCII
    // text.
    int calculateCheckSum(const std::string& text) const;

    // Appends the parts of `text` between the delimiters, empty ones included. A text one character shorter
    // than the delimiter has an empty part more: so an empty text has two. An empty delimiter is found
    // nowhere.
    void splitString(const std::string& text, const std::string& delimiter,
                     std::vector<std::string>& parts) const;

    // ---- ingestion (FixIngestion.cpp)

    enum class Outcome {
        kRow,      // the row is laid
        kSkipped,  // not of the version and type
        kBad,      // a column has no tag in the dictionary, or there is no adapter
    };

    // Does what parseFixMessage into an empty map, validateFixMessage and fixMsgToRowBuf do, in one pass
    // without the map: the same row, logs and exception.
    Outcome messageToRow(const std::string& message, const std::string& messageType, void* row);

    // ---- TCP source (FixSocket.cpp); descriptor and address are the caller's

    // Resolves the host (IPv4) into `address` and connects `socket` to the port, 1 to 65535: once when
    // `retryInterval` (seconds) is below 1, else as reconnectToSocketSource does. False: an unknown host is
    // in the connection errors, otherwise as the operation that connected reports it.
    bool openSocketSource(int& socket, sockaddr_in& address, const std::string& host, int port,
                          int retryInterval, int maxAttempts) const;

    // Makes one attempt at the address; host and port are for the messages. False: `socket` is -1 and nothing
    // stays open; a refusal is logged at level 4, the lack of a socket appended to the connection errors. A
    // host that does not answer is given up like one that refuses when the exit flag is seen, which is looked
    // at once a second.
    bool connectToSocketSource(int& socket, sockaddr_in& address, const std::string& host, int port) const;

    // Attempts to connect until it succeeds, waiting `retryInterval` seconds after each that does not. False:
    // after `maxAttempts` (0 or less: no limit), which the connection errors then say, or once the exit flag
    // is seen, at the latest a second after it was set if the wait goes on.
    bool reconnectToSocketSource(int& socket, sockaddr_in& address, const std::string& host, int port,
                                 int retryInterval, int maxAttempts) const;

    // Closes the socket and sets it to -1. Always true.
    bool closeSocketConnection(int& socket) const;

    // Ends every wait for an answer or a next attempt, also later ones, until cleared. Any thread.
    void setExitRequested(bool requested);
    bool isExitRequested() const;

    // ---- what a message is framed with
    const std::string beginStringTag = "8";
    const std::string msgTypeTag = "35";
    const std::string bodyLengthTag = "9";
    const std::string checkSumTag = "10";
    const char fieldSeparator = '\x01';
    const std::string checkSumMarker;  // how the last field begins, its separator in front included
    const int32_t checkSumMarkerLength;

private:
    class WantedFields;
    struct Column;

    bool finishConnect(int socket, const sockaddr_in& address) const;

    void trace(const char* operation) const;
    void log(int level, const std::string& text) const;
    bool refuse(const std::string& text) const;  // appends to the connection errors; false

    bool isExpected(std::optional<std::string_view> beginString, std::optional<std::string_view> type,
                    const std::string& expectedType) const;
    const Column& column(int index);
    bool appendColumns(void* row, fix::MessageWriter& writer);
    bool refuseColumn(const Column& unknown) const;

    Adapter* adapter_ = nullptr;
    std::string fixVersion_;
    std::map<std::string, std::string> nameByTag_;
    std::map<std::string, std::string> tagByName_;
    std::atomic<bool> exitRequested_ = false;
    std::vector<Column> columns_;           // what the dictionary said of the columns last seen
    std::unique_ptr<WantedFields> wanted_;  // the fields that those columns and the validation need
};
