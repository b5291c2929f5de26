// The keys of every text that the adapter logs or reports. Severity 7 is a trace, severity 3 an error; the
// texts stand in the server's message catalogue.
#pragma once

// One row a key: its constant, and the key itself.
// clang-format off
#define KEL_MESSAGE_KEYS(KEY) \
    KEY(kReset, "300281-7_JMSIN_ADAPTER_RESET") \
    KEY(kCanDiscover, "300282-7_JMSIN_ADAPTER_CANDISCOVER") \
    KEY(kGetNext, "300283-7_JMSIN_ADAPTER_GETNEXT") \
    KEY(kRowBufSize, "300284-7_JMSIN_ADAPTER_ROWBUFSIZE") \
    KEY(kPutNext, "300285-7_JMSIN_ADAPTER_PUTNEXT") \
    KEY(kStop, "300286-7_JMSIN_ADAPTER_STOP") \
    KEY(kParseCsv, "300287-7_JMSIN_ADAPTER_PARSECSVMSG") \
    KEY(kNoStreamName, "300288-3_JMSIN_ADAPTER_NOSTREAMNAME") \
    KEY(kNoStreamOp, "300289-3_JMSIN_ADAPTER_NOSTREAMOP") \
    KEY(kParseCsvEnd, "300290-7_JMSIN_ADAPTER_PARSECSVMSG_END") \
    KEY(kParseXml, "300291-7_JMSIN_ADAPTER_PARSEXMLMSG") \
    KEY(kParseXmlFailed, "300292-3_JMSIN_ADAPTER_PARSEXMLMSG_FAILED") \
    KEY(kParseXmlBadAttribute, "300293-3_JMSIN_ADAPTER_PARSEXMLMSG_BADATTR") \
    KEY(kDiscover, "300294-7_JMSIN_ADAPTER_DISCOVER") \
    KEY(kDiscoverXml, "300295-7_JMSIN_ADAPTER_DISCOVERXML") \
    KEY(kDiscoverCsv, "300296-7_JMSIN_ADAPTER_DISCOVERCSV") \
    KEY(kDiscoverFix, "300297-7_JMSIN_ADAPTER_DISCOVERFIX") \
    KEY(kDiscoverFixNoTag, "300298-3_JMSIN_ADAPTER_DISCOVERFIX_NOTAG") \
    KEY(kDiscoverObjectArray, "300299-7_JMSIN_ADAPTER_DISCOVEROBJARRAY") \
    KEY(kDiscoverCustom, "300300-7_JMSIN_ADAPTER_DISCOVERCUSTOM") \
    KEY(kAddRowToDiscovery, "300301-7_JMSIN_ADAPTER_ADDROWTODISCOVERY") \
    KEY(kMakeDiscoveredFieldTypes, "300302-7_JMSIN_ADAPTER_MAKEDISCFIELDTYPES") \
    KEY(kMakeDiscoveredRows, "300303-7_JMSIN_ADAPTER_MAKEDISCROWS") \
    KEY(kGetParam, "300304-7_JMSIN_ADAPTER_GETPARAM") \
    KEY(kEmptyDelimiter, "300305-3_JMSIN_ADAPTER_GETPARAM_EMPTY_DEL") \
    KEY(kEmptyConverterClass, "300306-3_JMSIN_ADAPTER_GETPARAM_EMPTY_CONVCLASS") \
    KEY(kUnknownDataFormat, "300307-3_JMSIN_ADAPTER_GETPARAM_UNKNOWN_DATAFORMAT") \
    KEY(kNoJndiUrl, "300309-3_JMSIN_ADAPTER_GETPARAM_NO_JNDI_URL") \
    KEY(kDurableQueue, "300536-3_JMSIN_ADAPTER_DURABLE_SUBSCRIPTION_NOT_SUPPORTED_FOR_QUEUE") \
    KEY(kNoClientId, "300537-3_JMSIN_ADAPTER_DURABLE_TOPIC_SUBSCRIPTION_CLIENTID_NOT_SPECIFIED") \
    KEY(kNoSubscriptionName, "300538-3_JMSIN_ADAPTER_DURABLE_TOPIC_SUBSCRIPTION_NAME_NOT_SPECIFIED") \
    KEY(kCommit, "300539-7_JMSIN_ADAPTER_COMMITTRANSACTION") \
    KEY(kCommitDurable, "300540-7_JMSIN_ADAPTER_COMMITTRANSACTION_DURABLE_SUBSCRIPTION_MODE_COMMIT")
// clang-format on

namespace keys {

#define KEL_KEY(name, key) inline constexpr char name[] = key;
KEL_MESSAGE_KEYS(KEL_KEY)
#undef KEL_KEY

// All of them, for checks that concern every key.
#define KEL_KEY(name, key) name,
inline constexpr const char* kAll[] = {KEL_MESSAGE_KEYS(KEL_KEY)};
#undef KEL_KEY

}  // namespace keys
