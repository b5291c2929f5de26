// The adapter's connection parameters: their names, once, and their values as read.
#pragma once

#include <cstdint>
#include <string>

#include "datatypes/Settings.h"
#include "jmsin/DataFormats.h"

class Adapter;

namespace jmsin {

namespace parameter {
inline constexpr char kDataFormat[] = "dataFormat";
inline constexpr char kDelimiter[] = "delimiter";
inline constexpr char kFixMessageType[] = "fixMessageType";
inline constexpr char kFixVersion[] = "fixVersion";
inline constexpr char kConverterClassName[] = "converterClassName";
inline constexpr char kConverterParam[] = "converterParam";
inline constexpr char kConnectionFactory[] = "connectionFactory";
inline constexpr char kJndiContextFactory[] = "jndiContextFactory";
inline constexpr char kJndiUrl[] = "jndiURL";
inline constexpr char kDestinationType[] = "destinationType";
inline constexpr char kDestinationName[] = "destinationName";
inline constexpr char kSubscriptionMode[] = "subscriptionMode";
inline constexpr char kClientId[] = "clientID";
inline constexpr char kSubscriptionName[] = "subscriptionName";
inline constexpr char kBatchSize[] = "batchsize";
inline constexpr char kExpectStreamNameOpcode[] = "expectStreamNameOpcode";
inline constexpr char kMatchStreamName[] = "matchStreamName";
inline constexpr char kTimeFormat[] = "timeFormat";
inline constexpr char kDateFormat[] = "dateFormat";
inline constexpr char kTimestampFormat[] = "timestampFormat";
}  // namespace parameter

// Values with a meaning of their own; any other destination is a topic, any other mode not durable.
inline constexpr char kQueue[] = "QUEUE";
inline constexpr char kDurable[] = "DURABLE";
inline constexpr char kNonDurable[] = "NONDURABLE";

struct Parameters {
    // Reads and checks them in a fixed order. False: the first fault, which is appended to the adapter's
    // connection errors; what was read before it stays, and nothing is read behind it.
    bool read(Adapter& adapter);

    std::string dataFormatName;
    DataFormat dataFormat = DataFormat::kCsv;
    std::string delimiter;
    std::string fixMessageType;
    std::string fixVersion;
    std::string converterClassName;
    std::string converterParam;
    std::string connectionFactory;
    std::string jndiContextFactory;
    std::string jndiURL;
    std::string destinationType;
    std::string destinationName;
    std::string subscriptionMode;
    bool durable = false;
    std::string clientID;
    std::string subscriptionName;
    int64_t batchSize = 1;  // messages a commit
    bool expectStreamNameOpcode = true;
    bool matchStreamName = true;
    std::string timeFormat = DataTypes::kSecondsFormat;
    std::string dateFormat = DataTypes::kSecondsFormat;
    std::string timestampFormat = DataTypes::kSecondsFormat;
};

}  // namespace jmsin
