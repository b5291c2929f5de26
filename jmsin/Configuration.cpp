// The connection parameters. The order is fixed: the first fault decides what the user is told, and later
// parameters are not read.
#include "jmsin/JmsInAdapter.h"
#include "jmsin/MessageKeys.h"

namespace {

struct FormatName {
    const char* name;
    DataFormat format;
};
constexpr FormatName kFormats[] = {
    {"CSV", DataFormat::kCsv},       {"XML", DataFormat::kXml},
    {"FIX", DataFormat::kFix},       {"OBJECTARRAY", DataFormat::kObjectArray},
    {"CUSTOM", DataFormat::kCustom},
};

}  // namespace

bool JmsInAdapter::getParams() {
    trace(keys::kGetParam);
    if (!readDataFormat() || !readFormatParams() || !readJndi() || !readSubscription()) return false;
    readMessageLayout();
    return true;
}

bool JmsInAdapter::readDataFormat() {
    getParam("dataFormat", dataFormatName_);
    for (const FormatName& known : kFormats) {
        if (dataFormatName_ == known.name) {
            dataFormat_ = known.format;
            return true;
        }
    }
    return refuse(keys::kUnknownDataFormat, dataFormatName_);
}

bool JmsInAdapter::readFormatParams() {
    switch (dataFormat_) {
        case DataFormat::kCsv:
            if (!getParam("delimiter", delimiter_)) return refuse(keys::kEmptyDelimiter);
            break;
        case DataFormat::kFix:
            getParam("fixMessageType", fixMessageType_);
            getParam("fixVersion", fixVersion_);
            break;
        case DataFormat::kCustom:
            if (!getParam("converterClassName", converterClassName_))
                return refuse(keys::kEmptyConverterClass);
            getParam("converterParam", converterParam_);
            break;
        case DataFormat::kXml:
        case DataFormat::kObjectArray:
            break;
    }
    return true;
}

bool JmsInAdapter::readJndi() {
    getParam("connectionFactory", connectionFactory_);
    if (!getParam("jndiContextFactory", jndiContextFactory_)) {
        // There is no key of its own for a missing context factory; this one, with the format, is expected
        // here.
        return refuse(keys::kUnknownDataFormat, dataFormatName_);
    }
    if (!getParam("jndiURL", jndiURL_)) return refuse(keys::kNoJndiUrl);
    return true;
}

bool JmsInAdapter::readSubscription() {
    getParam("destinationType", destinationType_);
    getParam("destinationName", destinationName_);
    if (!getParam("subscriptionMode", subscriptionMode_)) subscriptionMode_ = "NONDURABLE";
    durable_ = subscriptionMode_ == "DURABLE";
    clientID_.clear();
    subscriptionName_.clear();
    if (durable_) {
        if (destinationType_ == "QUEUE") return refuse(keys::kDurableQueue);
        if (!getParam("clientID", clientID_)) return refuse(keys::kNoClientId);
        if (!getParam("subscriptionName", subscriptionName_)) return refuse(keys::kNoSubscriptionName);
    }
    const int64_t batchSize = getConnectionParamInt64_t(connectionParams, "batchsize");
    batchSize_ = batchSize != 0 ? batchSize : 1;
    return true;
}

void JmsInAdapter::readMessageLayout() {
    const bool isObjectArray = dataFormat_ == DataFormat::kObjectArray;
    if (dataFormat_ == DataFormat::kCsv || isObjectArray) {
        expectStreamNameOpcode_ = readFlag("expectStreamNameOpcode");
    }
    if (dataFormat_ == DataFormat::kXml) matchStreamName_ = readFlag("matchStreamName");
    if (isObjectArray || dataFormat_ == DataFormat::kCustom) {
        timeFormat_ = dateFormat_ = timestampFormat_ = kSecondsFormat;
        return;
    }
    getParam("timeFormat", timeFormat_);
    getParam("dateFormat", dateFormat_);
    getParam("timestampFormat", timestampFormat_);
}

// Absent: true. Present: whether its integer value is non-zero.
bool JmsInAdapter::readFlag(const char* name) {
    return !doesConnectionParamExist(connectionParams, name) ||
           getConnectionParamInt64_t(connectionParams, name) != 0;
}
