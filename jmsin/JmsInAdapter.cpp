// The adapter's life and its receive loop.
#include "jmsin/JmsInAdapter.h"

#include <iterator>
#include <stdexcept>

#include "adapter/Shared.h"
#include "fix/NewFixUtils.h"
#include "jms/JmsUtils.h"
#include "jmsin/MessageKeys.h"
#include "jmsin/Parameters.h"
#include "util/KeptText.h"

namespace {

constexpr int kTraceLevel = 7;
constexpr bool kForInput = true;

void count(int64_t& counter) { shared::store(counter, counter + 1); }

}  // namespace

struct JmsInAdapter::Operations {
    DataFormat format;
    bool (JmsInAdapter::*prepare)();  // behind connecting; null: there is nothing to prepare
    Received (JmsInAdapter::*receive)();
    bool (JmsInAdapter::*discover)();
};

// One row a data format.
const JmsInAdapter::Operations& JmsInAdapter::operations() const {
    using Self = JmsInAdapter;
    static constexpr Operations kOperations[] = {
        {DataFormat::kCsv, nullptr, &Self::receiveCsv, &Self::discoverCsv},
        {DataFormat::kXml, nullptr, &Self::receiveXml, &Self::discoverXml},
        {DataFormat::kFix, &Self::prepareFix, &Self::receiveFix, &Self::discoverFix},
        {DataFormat::kObjectArray, nullptr, &Self::receiveObjectArray, &Self::discoverObjectArray},
        {DataFormat::kCustom, &Self::prepareCustom, &Self::receiveCustom, &Self::discoverCustom},
    };
    static_assert(jmsin::rowNumbersAreFormats(kOperations), "the row number is the format");
    static_assert(std::size(kOperations) == std::size(jmsin::kDataFormats), "every format has a row");
    return kOperations[static_cast<size_t>(params_->dataFormat)];
}

JmsInAdapter::JmsInAdapter()
    : params_(std::make_unique<jmsin::Parameters>()),
      fix_(std::make_unique<NewFixUtils>()),
      jms_(std::make_unique<JmsUtils>()) {
    connectionErrors = createConnectionErrors();
}

JmsInAdapter::~JmsInAdapter() {
    if (row_ != nullptr) deleteConnectionRow(row_);
    deleteConnectionErrors(connectionErrors);
}

void JmsInAdapter::trace(const char* key) { callLogMessage(kTraceLevel, getL10NMessageAsString(key)); }

bool JmsInAdapter::refuse(const char* key) {
    addGeneral(connectionErrors, getL10NMessageAsString(key).c_str());
    return false;
}

bool JmsInAdapter::refuse(const char* key, const std::string& parameter) {
    addGeneral(connectionErrors, getL10NMessageAsString(key, parameter.c_str()).c_str());
    return false;
}

bool JmsInAdapter::reset() {
    trace(keys::kReset);
    resetCommon();
    if (!getParams()) return false;

    jms_->reset(this);
    if (!jms_->init(params_->connectionFactory, params_->destinationType, params_->destinationName,
                    params_->durable, kForInput, !discoveryMode, columnMap_, params_->jndiContextFactory,
                    params_->jndiURL, params_->clientID, params_->subscriptionName)) {
        return false;
    }
    if (operations().prepare != nullptr && !(this->*operations().prepare)()) return false;

    if (row_ != nullptr) deleteConnectionRow(row_);
    row_ = createConnectionRow(jmsin::infoOf(params_->dataFormat).isByNames ? "RowByNames" : "RowByOrder");
    setTimeFormat(row_, params_->timeFormat.c_str());
    setDateFormat(row_, params_->dateFormat.c_str());
    setTimestampFormat(row_, params_->timestampFormat.c_str());
    setStreamType(row_, connectionRowType, false);
    setState(kStateRunning);
    return true;
}

bool JmsInAdapter::getParams() {
    trace(keys::kGetParam);
    return params_->read(*this);
}

bool JmsInAdapter::prepareFix() {
    fix_->reset(this);
    fix_->makeDictionary(
        params_->fixVersion);  // what it lacks stands in the errors; then every message is bad
    return true;
}

bool JmsInAdapter::prepareCustom() {
    return jms_->initConverter(params_->converterClassName, params_->converterParam, kForInput);
}

void* JmsInAdapter::getNext() {
    trace(keys::kGetNext);
    if (shared::load(stopFlag)) {
        setState(kStateStopped);
        return nullptr;
    }
    if (row_ == nullptr) return nullptr;  // never connected: no message, no count
    clearData(row_);
    const Received received = (this->*operations().receive)();
    if (received == Received::kNothing) return nullptr;
    void* serverRow = received == Received::kRow ? toRow(row_, totalRows, connectionErrors) : nullptr;
    count(serverRow != nullptr ? goodRows : badRows);
    count(totalRows);
    return serverRow;
}

bool JmsInAdapter::takeText() {
    util::giveBackIfLarge(text_);
    util::giveBackIfLarge(token_);
    return jms_->receiveTextMessage(text_);
}

JmsInAdapter::Received JmsInAdapter::receiveCsv() {
    if (!takeText()) return Received::kBad;
    if (text_.empty()) return Received::kNothing;
    return parseCsvMessage(text_, false) ? Received::kRow : Received::kBad;
}

JmsInAdapter::Received JmsInAdapter::receiveXml() {
    if (!takeText()) return Received::kBad;
    if (text_.empty()) return Received::kNothing;
    return parseXmlMessage(text_, nullptr) ? Received::kRow : Received::kBad;
}

// Messages of another type are counted and passed over.
JmsInAdapter::Received JmsInAdapter::receiveFix() {
    for (;;) {
        if (!takeText()) return Received::kBad;
        if (text_.empty()) return Received::kNothing;
        try {
            switch (fix_->messageToRow(text_, params_->fixMessageType, row_)) {
                case NewFixUtils::Outcome::kRow:
                    return Received::kRow;
                case NewFixUtils::Outcome::kBad:
                    return Received::kBad;
                case NewFixUtils::Outcome::kSkipped:
                    break;
            }
        } catch (const std::out_of_range&) {
            return Received::kBad;  // a version too short to be one; no exception may reach the server
        }
        count(totalRows);
    }
}

JmsInAdapter::Received JmsInAdapter::receiveObjectArray() {
    if (!jms_->receiveObjectArrayMessage(callGetStreamName(), row_, params_->expectStreamNameOpcode))
        return Received::kBad;
    return size(row_) == 0 ? Received::kNothing : Received::kRow;
}

JmsInAdapter::Received JmsInAdapter::receiveCustom() {
    if (!jms_->receiveCustomMessage(callGetStreamName(), row_)) return Received::kBad;
    if (size(row_) > 0) return Received::kRow;
    trace(keys::kRowBufSize);
    return Received::kNothing;
}

bool JmsInAdapter::discoverByFormat() { return (this->*operations().discover)(); }

void JmsInAdapter::putNext(void* /*row*/) { trace(keys::kPutNext); }

void JmsInAdapter::stop() {
    trace(keys::kStop);
    shared::store(stopFlag, true);
    setState(kStateStopped);
    jms_->disconnect();
}

int64_t JmsInAdapter::commitTransaction() {
    trace(keys::kCommit);
    if (!params_->durable) return 0;
    if (totalRows % params_->batchSize != 0) return totalRows / params_->batchSize;
    trace(keys::kCommitDurable);
    return jms_->commitTransaction() ? 1 : 0;
}

bool JmsInAdapter::canDiscover() {
    trace(keys::kCanDiscover);
    return jmsin::infoOf(params_->dataFormat).canDiscover;
}
