#include "host/toolkit/ConnectionRow.h"
#include "tests/jmsin/AdapterFixture.h"

namespace {

using Configuration = AdapterFixture;

TEST_F(Configuration, TheFirstFaultWins) {
    const auto topic = [](Params more) {
        more.insert({{"subscriptionMode", "DURABLE"}, {"destinationType", "TOPIC"}});
        return params("XML", more);
    };
    const std::pair<Params, std::string> kRows[] = {
        {{}, "300307-3_JMSIN_ADAPTER_GETPARAM_UNKNOWN_DATAFORMAT "},
        {params("csv"), "300307-3_JMSIN_ADAPTER_GETPARAM_UNKNOWN_DATAFORMAT csv"},
        {{{"dataFormat", "CSV"}}, "300305-3_JMSIN_ADAPTER_GETPARAM_EMPTY_DEL"},
        {{{"dataFormat", "CUSTOM"}}, "300306-3_JMSIN_ADAPTER_GETPARAM_EMPTY_CONVCLASS"},
        {{{"dataFormat", "XML"}}, "300307-3_JMSIN_ADAPTER_GETPARAM_UNKNOWN_DATAFORMAT XML"},
        {topic({{"jndiURL", ""}}), "300309-3_JMSIN_ADAPTER_GETPARAM_NO_JNDI_URL"},
        {topic({{"destinationType", "QUEUE"}}), "300536-3_JMSIN_ADAPTER_DURABLE_SUBSCRIPTION_NOT_SUPPORTED_FOR_QUEUE"},
        {topic({}), "300537-3_JMSIN_ADAPTER_DURABLE_TOPIC_SUBSCRIPTION_CLIENTID_NOT_SPECIFIED"},
        {topic({{"clientID", "c"}}), "300538-3_JMSIN_ADAPTER_DURABLE_TOPIC_SUBSCRIPTION_NAME_NOT_SPECIFIED"},
        {topic({{"clientID", "c"}, {"subscriptionName", "s"}}), ""},
        {params("XML", {{"subscriptionMode", "durable"}, {"destinationType", "QUEUE"}}), ""},
    };
    for (const auto& [given, error] : kRows) {
        platform.params = given;
        platform.errors.clear();
        EXPECT_EQ(adapter.getParams(), error.empty());
        EXPECT_EQ(platform.errors, error.empty() ? Texts{} : Texts{error});
    }
}

TEST_F(Configuration, KnowsFiveFormats) {
    // Which can be discovered, and whether temporal texts are in the configured formats or in seconds.
    const std::tuple<const char*, bool, const char*> kRows[] = {{"CSV", true, "%H %d %m"},
                                                                {"XML", true, "%H %d %m"},
                                                                {"FIX", false, "%H %d %m"},
                                                                {"OBJECTARRAY", true, "%s %s %s"},
                                                                {"CUSTOM", false, "%s %s %s"}};
    for (const auto& [format, discovers, formats] : kRows) {
        start(format, {{"timeFormat", "%H"}, {"dateFormat", "%d"}, {"timestampFormat", "%m"}});
        EXPECT_EQ(adapter.canDiscover(), discovers) << format;
        const auto& row = *static_cast<host::ConnectionRow*>(fake::rows.back());
        EXPECT_EQ(row.formats.time + " " + row.formats.date + " " + row.formats.timestamp, formats) << format;
        EXPECT_TRUE(row.type() == adapter.connectionRowType && platform.context.state == 2);
    }
}

TEST_F(Configuration, ResetHandsTheParametersOn) {
    const Params kMore = {{"connectionFactory", "CF"}, {"destinationType", "TOPIC"}, {"destinationName", "T"},
                          {"clientID", "id"},          {"subscriptionName", "sub"},  {"converterParam", "p"}};
    platform.params = params("CUSTOM", durable(kMore));
    adapter.discoveryMode = true;
    ASSERT_TRUE(adapter.reset());
    EXPECT_EQ(jvm.takeCalls(), (Texts{"AttachCurrentThread", "<init>(CF,TOPIC,T,true,null,null,null,ctx,url,id,sub)",
                                      "connectForInput(false)", "initInConverter(Conv,p)"}));
    // Client ID and subscription name are for durable subscriptions only.
    platform.params = params("XML", kMore);
    adapter.discoveryMode = false;
    ASSERT_TRUE(adapter.reset());
    EXPECT_EQ(jvm.takeCalls(), (Texts{"AttachCurrentThread", "<init>(CF,TOPIC,T,false,[5 5],[Symbol Price],[null null],ctx,url,,)",
                                      "connectForInput(true)"}));
}

TEST_F(Configuration, ResetFailsWhereItsStepsFail) {
    platform.params = params("CUSTOM");
    for (const char* step : {"initInConverter", "connectForInput"}) {
        jvm.answer(step, {nullptr, JNI_FALSE});
        EXPECT_FALSE(adapter.reset()) << step;
        jvm.answer(step, {});
    }
    EXPECT_TRUE(fake::rows.empty() && platform.context.state == 0);
    EXPECT_FALSE(adapter.discover(""));
}

TEST_F(Configuration, FlagsAreTrueUnlessZeroOrNoNumber) {
    for (const auto& [value, expected] :
         std::map<std::string, bool>{{"1", true}, {"2", true}, {"0", false}, {"true", false}, {"", false}}) {
        start("OBJECTARRAY", {{"expectStreamNameOpcode", value}});
        adapter.getNext();
        EXPECT_EQ(jvm.calls.back(), expected ? "receiveObjectArrayMessage(true)" : "receiveObjectArrayMessage(false)") << value;
        start("CSV", {{"expectStreamNameOpcode", value}});
        nextText("Trades,u");
        EXPECT_EQ(next(), expected ? "u null,null 1 1 0" : "i Trades,u 1 1 0") << value;
    }
}

}  // namespace
