// The keys of every text that the adapter logs or reports. Severity 7 is a trace, severity 3 an error; the
// texts stand in the server's message catalogue.
#pragma once

namespace keys {

inline constexpr char kReset[] = "300281-7_JMSIN_ADAPTER_RESET";
inline constexpr char kCanDiscover[] = "300282-7_JMSIN_ADAPTER_CANDISCOVER";
inline constexpr char kGetNext[] = "300283-7_JMSIN_ADAPTER_GETNEXT";
inline constexpr char kRowBufSize[] = "300284-7_JMSIN_ADAPTER_ROWBUFSIZE";
inline constexpr char kPutNext[] = "300285-7_JMSIN_ADAPTER_PUTNEXT";
inline constexpr char kStop[] = "300286-7_JMSIN_ADAPTER_STOP";
inline constexpr char kParseCsv[] = "300287-7_JMSIN_ADAPTER_PARSECSVMSG";
inline constexpr char kNoStreamName[] = "300288-3_JMSIN_ADAPTER_NOSTREAMNAME";
inline constexpr char kNoStreamOp[] = "300289-3_JMSIN_ADAPTER_NOSTREAMOP";
inline constexpr char kParseCsvEnd[] = "300290-7_JMSIN_ADAPTER_PARSECSVMSG_END";
inline constexpr char kParseXml[] = "300291-7_JMSIN_ADAPTER_PARSEXMLMSG";
inline constexpr char kParseXmlFailed[] = "300292-3_JMSIN_ADAPTER_PARSEXMLMSG_FAILED";
inline constexpr char kParseXmlBadAttribute[] = "300293-3_JMSIN_ADAPTER_PARSEXMLMSG_BADATTR";
inline constexpr char kDiscover[] = "300294-7_JMSIN_ADAPTER_DISCOVER";
inline constexpr char kDiscoverXml[] = "300295-7_JMSIN_ADAPTER_DISCOVERXML";
inline constexpr char kDiscoverCsv[] = "300296-7_JMSIN_ADAPTER_DISCOVERCSV";
inline constexpr char kDiscoverFix[] = "300297-7_JMSIN_ADAPTER_DISCOVERFIX";
inline constexpr char kDiscoverFixNoTag[] = "300298-3_JMSIN_ADAPTER_DISCOVERFIX_NOTAG";
inline constexpr char kDiscoverObjectArray[] = "300299-7_JMSIN_ADAPTER_DISCOVEROBJARRAY";
inline constexpr char kDiscoverCustom[] = "300300-7_JMSIN_ADAPTER_DISCOVERCUSTOM";
inline constexpr char kAddRowToDiscovery[] = "300301-7_JMSIN_ADAPTER_ADDROWTODISCOVERY";
inline constexpr char kMakeDiscoveredFieldTypes[] = "300302-7_JMSIN_ADAPTER_MAKEDISCFIELDTYPES";
inline constexpr char kMakeDiscoveredRows[] = "300303-7_JMSIN_ADAPTER_MAKEDISCROWS";
inline constexpr char kGetParam[] = "300304-7_JMSIN_ADAPTER_GETPARAM";
inline constexpr char kEmptyDelimiter[] = "300305-3_JMSIN_ADAPTER_GETPARAM_EMPTY_DEL";
inline constexpr char kEmptyConverterClass[] = "300306-3_JMSIN_ADAPTER_GETPARAM_EMPTY_CONVCLASS";
inline constexpr char kUnknownDataFormat[] = "300307-3_JMSIN_ADAPTER_GETPARAM_UNKNOWN_DATAFORMAT";
inline constexpr char kNoJndiUrl[] = "300309-3_JMSIN_ADAPTER_GETPARAM_NO_JNDI_URL";
inline constexpr char kDurableQueue[] = "300536-3_JMSIN_ADAPTER_DURABLE_SUBSCRIPTION_NOT_SUPPORTED_FOR_QUEUE";
inline constexpr char kNoClientId[] =
    "300537-3_JMSIN_ADAPTER_DURABLE_TOPIC_SUBSCRIPTION_CLIENTID_NOT_SPECIFIED";
inline constexpr char kNoSubscriptionName[] =
    "300538-3_JMSIN_ADAPTER_DURABLE_TOPIC_SUBSCRIPTION_NAME_NOT_SPECIFIED";
inline constexpr char kCommit[] = "300539-7_JMSIN_ADAPTER_COMMITTRANSACTION";
inline constexpr char kCommitDurable[] =
    "300540-7_JMSIN_ADAPTER_COMMITTRANSACTION_DURABLE_SUBSCRIPTION_MODE_COMMIT";

// Every key above, for checks that concern all of them.
inline constexpr const char* kAll[] = {
    kReset,
    kCanDiscover,
    kGetNext,
    kRowBufSize,
    kPutNext,
    kStop,
    kParseCsv,
    kNoStreamName,
    kNoStreamOp,
    kParseCsvEnd,
    kParseXml,
    kParseXmlFailed,
    kParseXmlBadAttribute,
    kGetParam,
    kEmptyDelimiter,
    kEmptyConverterClass,
    kUnknownDataFormat,
    kNoJndiUrl,
    kDurableQueue,
    kNoClientId,
    kNoSubscriptionName,
    kDiscover,
    kDiscoverXml,
    kDiscoverCsv,
    kDiscoverFix,
    kDiscoverFixNoTag,
    kDiscoverObjectArray,
    kDiscoverCustom,
    kAddRowToDiscovery,
    kMakeDiscoveredFieldTypes,
    kMakeDiscoveredRows,
    kCommit,
    kCommitDurable,
};

}  // namespace keys
