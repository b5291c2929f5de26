// The adapter's life and its receive loop.
#include "jmsin/JmsInAdapter.h"

#include <stdexcept>

#include "adapter/Shared.h"
#include "fix/NewFixUtils.h"
#include "jms/JmsUtils.h"
#include "jmsin/MessageKeys.h"
#include "util/KeptText.h"

namespace {

constexpr int kTraceLevel = 7;

void count(int64_t& counter) { shared::store(counter, counter + 1); }

}  // namespace

JmsInAdapter::JmsInAdapter() : fix_(std::make_unique<NewFixUtils>()), jms_(std::make_unique<JmsUtils>()) {
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

    constexpr bool kForInput = true;
    jms_->reset(this);
    if (!jms_->init(connectionFactory_, destinationType_, destinationName_, durable_, kForInput,
                    !discoveryMode, columnMap_, jndiContextFactory_, jndiURL_, clientID_,
                    subscriptionName_)) {
        return false;
    }
    if (dataFormat_ == DataFormat::kFix) {
        fix_->reset(this);
        fix_->makeDictionary(fixVersion_);  // what it lacks stands in the errors; then every message is bad
    }
    if (dataFormat_ == DataFormat::kCustom &&
        !jms_->initConverter(converterClassName_, converterParam_, kForInput)) {
        return false;
    }

    if (row_ != nullptr) deleteConnectionRow(row_);
    row_ = createConnectionRow(dataFormat_ == DataFormat::kXml ? "RowByNames" : "RowByOrder");
    setTimeFormat(row_, timeFormat_.c_str());
    setDateFormat(row_, dateFormat_.c_str());
    setTimestampFormat(row_, timestampFormat_.c_str());
    setStreamType(row_, connectionRowType, false);
    setState(kStateRunning);
    return true;
}

void* JmsInAdapter::getNext() {
    trace(keys::kGetNext);
    if (shared::load(stopFlag)) {
        setState(kStateStopped);
        return nullptr;
    }
    if (row_ == nullptr) return nullptr;  // never connected: no message, no count
    clearData(row_);
    const Received received = receive();
    if (received == Received::kNothing) return nullptr;
    void* serverRow = received == Received::kRow ? toRow(row_, totalRows, connectionErrors) : nullptr;
    count(serverRow != nullptr ? goodRows : badRows);
    count(totalRows);
    return serverRow;
}

JmsInAdapter::Received JmsInAdapter::receive() {
    switch (dataFormat_) {
        case DataFormat::kCsv:
        case DataFormat::kXml:
            return receiveText();
        case DataFormat::kFix:
            return receiveFix();
        case DataFormat::kObjectArray:
            return receiveObjectArray();
        case DataFormat::kCustom:
            return receiveCustom();
    }
    return Received::kBad;
}

bool JmsInAdapter::takeText() {
    util::giveBackIfLarge(text_);
    util::giveBackIfLarge(token_);
    return jms_->receiveTextMessage(text_);
}

JmsInAdapter::Received JmsInAdapter::receiveText() {
    if (!takeText()) return Received::kBad;
    if (text_.empty()) return Received::kNothing;
    const bool parsed =
        dataFormat_ == DataFormat::kXml ? parseXmlMessage(text_, nullptr) : parseCsvMessage(text_, false);
    return parsed ? Received::kRow : Received::kBad;
}

// Messages of another type are counted and passed over.
JmsInAdapter::Received JmsInAdapter::receiveFix() {
    for (;;) {
        if (!takeText()) return Received::kBad;
        if (text_.empty()) return Received::kNothing;
        try {
            switch (fix_->messageToRow(text_, fixMessageType_, row_)) {
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
    if (!jms_->receiveObjectArrayMessage(callGetStreamName(), row_, expectStreamNameOpcode_))
        return Received::kBad;
    return size(row_) == 0 ? Received::kNothing : Received::kRow;
}

JmsInAdapter::Received JmsInAdapter::receiveCustom() {
    if (!jms_->receiveCustomMessage(callGetStreamName(), row_)) return Received::kBad;
    if (size(row_) > 0) return Received::kRow;
    trace(keys::kRowBufSize);
    return Received::kNothing;
}

void JmsInAdapter::putNext(void* /*row*/) { trace(keys::kPutNext); }

void JmsInAdapter::stop() {
    trace(keys::kStop);
    shared::store(stopFlag, true);
    setState(kStateStopped);
    jms_->disconnect();
}

int64_t JmsInAdapter::commitTransaction() {
    trace(keys::kCommit);
    if (!durable_) return 0;
    if (totalRows % batchSize_ != 0) return totalRows / batchSize_;
    trace(keys::kCommitDurable);
    return jms_->commitTransaction() ? 1 : 0;
}

bool JmsInAdapter::canDiscover() {
    trace(keys::kCanDiscover);
    return dataFormat_ != DataFormat::kFix && dataFormat_ != DataFormat::kCustom;
}
