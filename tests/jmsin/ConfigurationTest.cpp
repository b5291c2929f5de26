#include "tests/jmsin/AdapterFixture.h"

namespace {

using Configuration = AdapterFixture;

TEST_F(Configuration, TheFirstFaultWins) {
    struct Row {
        Params params;
        const char* error;  // "": accepted
    };
    const Params kDurable = {{"subscriptionMode", "DURABLE"}, {"destinationType", "TOPIC"}};
    const auto durable = [&](Params more) {
        more.insert(kDurable.begin(), kDurable.end());
        return params("XML", more);
    };
    const Row kRows[] = {
        {{}, "300307-3_JMSIN_ADAPTER_GETPARAM_UNKNOWN_DATAFORMAT "},
        {params("csv"), "300307-3_JMSIN_ADAPTER_GETPARAM_UNKNOWN_DATAFORMAT csv"},
        {{{"dataFormat", "CSV"}}, "300305-3_JMSIN_ADAPTER_GETPARAM_EMPTY_DEL"},
        {{{"dataFormat", "CUSTOM"}}, "300306-3_JMSIN_ADAPTER_GETPARAM_EMPTY_CONVCLASS"},
        {{{"dataFormat", "XML"}}, "300307-3_JMSIN_ADAPTER_GETPARAM_UNKNOWN_DATAFORMAT XML"},
        {params("CUSTOM", {{"jndiContextFactory", ""}}), "300307-3_JMSIN_ADAPTER_GETPARAM_UNKNOWN_DATAFORMAT CUSTOM"},
        {params("FIX", {{"jndiURL", ""}}), "300309-3_JMSIN_ADAPTER_GETPARAM_NO_JNDI_URL"},
        {params("CSV", {{"destinationType", "QUEUE"}, {"subscriptionMode", "DURABLE"}}),
         "300536-3_JMSIN_ADAPTER_DURABLE_SUBSCRIPTION_NOT_SUPPORTED_FOR_QUEUE"},
        {durable({}), "300537-3_JMSIN_ADAPTER_DURABLE_TOPIC_SUBSCRIPTION_CLIENTID_NOT_SPECIFIED"},
        {durable({{"clientID", "c"}}), "300538-3_JMSIN_ADAPTER_DURABLE_TOPIC_SUBSCRIPTION_NAME_NOT_SPECIFIED"},
        {durable({{"clientID", "c"}, {"subscriptionName", "s"}}), ""},
        {params("XML", {{"subscriptionMode", "durable"}, {"destinationType", "QUEUE"}}), ""},
        {params("OBJECTARRAY"), ""},
        {params("CUSTOM"), ""},
        {params("FIX"), ""},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.error);
        toolkit.params = row.params;
        toolkit.errors.clear();
        EXPECT_EQ(adapter.getParams(), *row.error == '\0');
        EXPECT_EQ(toolkit.errors, *row.error == '\0' ? Calls{} : Calls{row.error});
    }
}

TEST_F(Configuration, ReadsInOrderAndStopsAtTheFault) {
    toolkit.params = params("CSV", {{"destinationType", "TOPIC"}, {"subscriptionMode", "DURABLE"}});
    toolkit.takeCalls();
    EXPECT_FALSE(adapter.getParams());
    Calls names;
    for (const std::string& call : toolkit.takeCalls("getConnectionParamString")) names.push_back(call.substr(32));
    EXPECT_EQ(names, (Calls{"dataFormat)", "delimiter)", "connectionFactory)", "jndiContextFactory)", "jndiURL)", "destinationType)",
                            "destinationName)", "subscriptionMode)", "clientID)"}));
}

TEST_F(Configuration, ReadsWhatTheFormatHas) {
    const auto read = [&](const char* format) {
        toolkit.params =
            params(format, {{"destinationType", "TOPIC"}, {"subscriptionMode", "DURABLE"}, {"clientID", "c"}, {"subscriptionName", "s"}});
        toolkit.takeCalls();
        EXPECT_TRUE(adapter.getParams());
        std::string names;
        for (const std::string& call : toolkit.takeCalls()) {
            const size_t name = call.find("(params,");
            if (name != std::string::npos) names += call.substr(name + 8, call.size() - name - 9) + " ";
        }
        return names;
    };
    const std::string kCommon =
        "connectionFactory jndiContextFactory jndiURL destinationType destinationName "
        "subscriptionMode clientID subscriptionName batchsize ";
    const std::string kFormats = "timeFormat dateFormat timestampFormat ";
    EXPECT_EQ(read("CSV"), "dataFormat delimiter " + kCommon + "expectStreamNameOpcode " + kFormats);
    EXPECT_EQ(read("XML"), "dataFormat " + kCommon + "matchStreamName " + kFormats);
    EXPECT_EQ(read("FIX"), "dataFormat fixMessageType fixVersion " + kCommon + kFormats);
    EXPECT_EQ(read("OBJECTARRAY"), "dataFormat " + kCommon + "expectStreamNameOpcode ");
    EXPECT_EQ(read("CUSTOM"), "dataFormat converterClassName converterParam " + kCommon);
}

TEST_F(Configuration, ResetHandsTheParametersOn) {
    const Params kMore = {{"connectionFactory", "CF"}, {"destinationType", "TOPIC"}, {"destinationName", "T"}, {"clientID", "id"},
                          {"subscriptionName", "sub"}, {"timeFormat", "%H"},         {"dateFormat", "%d"},     {"timestampFormat", "%s"}};
    toolkit.params = params("XML", kMore);
    toolkit.takeCalls();
    ASSERT_TRUE(adapter.reset());
    // Client ID and subscription name are for durable subscriptions only.
    EXPECT_EQ(jvm.takeCalls(), (Calls{"AttachCurrentThread", "<init>(CF,TOPIC,T,false,[5 5],[Symbol Price],[null null],ctx,url,,)",
                                      "connectForInput(true)"}));
    Calls rowCalls = toolkit.takeCalls();
    rowCalls.erase(rowCalls.begin(), std::find(rowCalls.begin(), rowCalls.end(), "createConnectionRow(RowByNames)"));
    EXPECT_EQ(rowCalls, (Calls{"createConnectionRow(RowByNames)", "setTimeFormat(row,%H)", "setDateFormat(row,%d)",
                               "setTimestampFormat(row,%s)", "setStreamType(row,type,false)", "setAdapterState(cb,2)"}));

    toolkit.params = params("CUSTOM", {{"converterParam", "p"}, {"dateFormat", "ignored"}});
    toolkit.params["subscriptionMode"] = "DURABLE";
    toolkit.params.insert(kMore.begin(), kMore.end());
    connectors = 2;
    JmsInAdapter custom;
    custom.discoveryMode = true;
    ASSERT_TRUE(custom.reset());
    EXPECT_EQ(jvm.takeCalls(), (Calls{"AttachCurrentThread", "<init>(CF,TOPIC,T,true,null,null,null,ctx,url,id,sub)",
                                      "connectForInput(false)", "initInConverter(Conv,p)"}));
    EXPECT_EQ(toolkit.takeCalls("setDateFormat"), (Calls{"setDateFormat(row,%s)"}));
    toolkit.params["dataFormat"] = "OBJECTARRAY";
    ASSERT_TRUE(custom.reset());
    EXPECT_EQ(toolkit.takeCalls("setTimestampFormat"), (Calls{"setTimestampFormat(row,%s)"}));
}

TEST_F(Configuration, ResetFailsWhereItsStepsFail) {
    toolkit.params = params("CUSTOM");
    jvm.answer("initInConverter", {nullptr, JNI_FALSE, false});
    EXPECT_FALSE(adapter.reset());
    jvm.answer("initInConverter", {nullptr, JNI_TRUE, false});
    jvm.answer("connectForInput", {nullptr, JNI_FALSE, false});
    EXPECT_FALSE(adapter.reset());
    EXPECT_TRUE(toolkit.takeCalls("createConnectionRow").empty());
    EXPECT_EQ(toolkit.state, -1);
}

TEST_F(Configuration, FlagsAreTrueUnlessZeroOrNoNumber) {
    for (const auto& [value, expected] :
         std::map<std::string, bool>{{"1", true}, {"2", true}, {"0", false}, {"true", false}, {"", false}}) {
        start("CSV", {{"expectStreamNameOpcode", value}});
        nextText("Trades,i,IBM");
        ASSERT_NE(adapter.getNext(), nullptr);
        EXPECT_EQ(toolkit.posted.back(), expected ? "i IBM" : "- Trades,i,IBM") << value;
    }
}

}  // namespace
