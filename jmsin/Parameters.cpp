// Reads the connection parameters. The order is fixed: the first fault decides what the user is told, and
// later parameters are not read.
#include "jmsin/Parameters.h"

#include "adapter/Adapter.h"
#include "jmsin/MessageKeys.h"

namespace jmsin {

namespace {

class Reader {
public:
    Reader(Adapter& adapter, Parameters& values) : adapter_(adapter), values_(values) {}

    bool readAll() {
        if (!readDataFormat() || !readFormatParams() || !readJndi() || !readSubscription()) return false;
        readMessageLayout();
        return true;
    }

private:
    // Whether it is there and not empty; an absent one reads as the empty text.
    bool get(const char* name, std::string& value) { return adapter_.getParam(name, value); }

    bool refuse(const char* key) { return refuse(adapter_.getL10NMessageAsString(key)); }
    bool refuse(const char* key, const std::string& parameter) {
        return refuse(adapter_.getL10NMessageAsString(key, parameter.c_str()));
    }
    bool refuse(const std::string& text) {
        adapter_.addGeneral(adapter_.connectionErrors, text.c_str());
        return false;
    }

    bool readDataFormat() {
        get(parameter::kDataFormat, values_.dataFormatName);
        const DataFormatInfo* info = findDataFormat(values_.dataFormatName);
        if (info == nullptr) return refuse(keys::kUnknownDataFormat, values_.dataFormatName);
        values_.dataFormat = info->format;
        return true;
    }

    bool readFormatParams() {
        switch (values_.dataFormat) {
            case DataFormat::kCsv:
                if (!get(parameter::kDelimiter, values_.delimiter)) return refuse(keys::kEmptyDelimiter);
                break;
            case DataFormat::kFix:
                get(parameter::kFixMessageType, values_.fixMessageType);
                get(parameter::kFixVersion, values_.fixVersion);
                break;
            case DataFormat::kCustom:
                if (!get(parameter::kConverterClassName, values_.converterClassName))
                    return refuse(keys::kEmptyConverterClass);
                get(parameter::kConverterParam, values_.converterParam);
                break;
            case DataFormat::kXml:
            case DataFormat::kObjectArray:
                break;
        }
        return true;
    }

    bool readJndi() {
        get(parameter::kConnectionFactory, values_.connectionFactory);
        // There is no key of its own for a missing context factory; this one, with the format, is expected
        // here.
        if (!get(parameter::kJndiContextFactory, values_.jndiContextFactory))
            return refuse(keys::kUnknownDataFormat, values_.dataFormatName);
        return get(parameter::kJndiUrl, values_.jndiURL) || refuse(keys::kNoJndiUrl);
    }

    bool readSubscription() {
        get(parameter::kDestinationType, values_.destinationType);
        get(parameter::kDestinationName, values_.destinationName);
        if (!get(parameter::kSubscriptionMode, values_.subscriptionMode))
            values_.subscriptionMode = kNonDurable;
        values_.durable = values_.subscriptionMode == kDurable;
        values_.clientID.clear();
        values_.subscriptionName.clear();
        if (values_.durable) {
            if (values_.destinationType == kQueue) return refuse(keys::kDurableQueue);
            if (!get(parameter::kClientId, values_.clientID)) return refuse(keys::kNoClientId);
            if (!get(parameter::kSubscriptionName, values_.subscriptionName))
                return refuse(keys::kNoSubscriptionName);
        }
        const int64_t batchSize =
            adapter_.getConnectionParamInt64_t(adapter_.connectionParams, parameter::kBatchSize);
        values_.batchSize = batchSize != 0 ? batchSize : 1;
        return true;
    }

    void readMessageLayout() {
        const DataFormatInfo& info = infoOf(values_.dataFormat);
        if (info.prefix == Prefix::kAsConfigured)
            values_.expectStreamNameOpcode = readFlag(parameter::kExpectStreamNameOpcode);
        if (info.isByNames) values_.matchStreamName = readFlag(parameter::kMatchStreamName);
        if (info.datesAsSeconds) {
            values_.timeFormat = values_.dateFormat = values_.timestampFormat = DataTypes::kSecondsFormat;
            return;
        }
        get(parameter::kTimeFormat, values_.timeFormat);
        get(parameter::kDateFormat, values_.dateFormat);
        get(parameter::kTimestampFormat, values_.timestampFormat);
    }

    // Absent: true. Present: whether its integer value is non-zero.
    bool readFlag(const char* name) {
        return !adapter_.doesConnectionParamExist(adapter_.connectionParams, name) ||
               adapter_.getConnectionParamInt64_t(adapter_.connectionParams, name) != 0;
    }

    Adapter& adapter_;
    Parameters& values_;
};

}  // namespace

bool Parameters::read(Adapter& adapter) { return Reader(adapter, *this).readAll(); }

}  // namespace jmsin
