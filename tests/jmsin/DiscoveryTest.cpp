// What discovery proposes for browsed messages, in each format.
#include "tests/jmsin/AdapterFixture.h"

#include <algorithm>
#include <cstdlib>
#include <sstream>

namespace {

class Discovery : public AdapterFixture {
protected:
    using Rows = std::vector<Texts>;

    // A connected adapter in discovery mode over the texts; for the array formats each text is split at "|".
    void browse(const std::string& format, const Texts& messages, const Params& more = {}) {
        adapter.discoveryMode = true;
        adapter.discovered = false;
        start(format, more);
        std::vector<fake::Value> found;
        const bool isArray = format == "OBJECTARRAY" || format == "CUSTOM";
        for (std::string message : messages) {
            if (format == "FIX") std::replace(message.begin(), message.end(), '|', '\1');
            std::vector<fake::Value> elements;
            std::stringstream parts(message);
            for (std::string part; std::getline(parts, part, '|');) elements.push_back(fake::string(part));
            found.push_back(isArray ? fake::array(elements) : fake::string(message));
        }
        for (const char* kind : {"Text", "ObjectArray", "Custom"})
            jvm.answer(std::string("browse") + kind + "Messages", {fake::array(found)});
    }

    // "name type, name type" of the proposed columns.
    std::string columns() const {
        std::string text;
        for (size_t i = 0; i < adapter.fieldNames.size(); ++i) text += adapter.fieldNames[i] + " " + adapter.fieldTypes.at(i) + ",";
        EXPECT_EQ(adapter.fieldNames.size(), adapter.fieldTypes.size());
        return text;
    }
};

TEST_F(Discovery, Proposes) {
    const char kNoTag[] = "300298-3_JMSIN_ADAPTER_DISCOVERFIX_NOTAG 999";
    const struct {
        std::string format;
        Texts messages;
        const char* columns;
        Rows samples;
        Texts errors = {};
    } kRows[] = {
        // Prefixes are columns like any other; a shorter sample shows no field of the one before.
        {"CSV",
         {"T,i,1,", "T,i,2.5", "T,i,3000000000,x,2020-01-02T03:04:05.5,2.1.2020"},
         "column_0 string,column_1 string,column_2 float,column_3 string,column_4 timestamp,column_5 date,",
         {{"T", "i", "1", ""}, {"T", "i", "2.5"}, {"T", "i", "3000000000", "x", "2020-01-02T03:04:05.5", "2.1.2020"}}},
        {"CSV", {"1", "", "x"}, "column_0 integer,", {{"1"}}},
        {"CSV", {"", "x"}, "", {}},
        {"CSV", {}, "", {}},
        {"OBJECTARRAY", {"1|a", "2|", "", "x"}, "column_0 integer,column_1 string,", {{"1", "a"}, {"2"}}},
        {"OBJECTARRAY", {}, "", {}},
        // These formats read dates as seconds, and what follows a number is ignored.
        {"CUSTOM", {"7 apples|x|12:00:00"}, "column_0 date,column_1 string,column_2 date,", {{"7 apples", "x", "12:00:00"}}},
        {"XML",
         {"none", "<T B=\"1\" A=\"x\" KEL_OPS=\"i\" B=\"9\"/>", "<T C=\"7\" B=\"2.5\"/>", "<T A=\"\"/>"},
         "B float,A string,",
         {{"9", "x"}, {"2.5", ""}, {"", ""}},
         {"300292-3_JMSIN_ADAPTER_PARSEXMLMSG_FAILED"}},
        {"XML", {}, "", {}},
        {"FIX",
         {"8=F|9=5|35=D|55=IBM|44=1|10=0|", "44=2.5|6=3|999=x|"},
         "AvgPx integer,Price float,Symbol string,",
         {{"", "1", "IBM"}, {"3", "2.5", ""}},
         {kNoTag}},
        {"FIX", {}, "", {}},
    };
    setenv("KEL_HOME", KEL_SOURCE_DIR, 1);
    for (const auto& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.format << " " << row.columns);
        browse(row.format, row.messages,
               {{"matchStreamName", "0"}, {"fixVersion", "4.2"}, {"dateFormat", "%d.%m.%Y"}, {"timestampFormat", "%Y-%m-%dT%H:%M:%S"}});
        EXPECT_EQ(adapter.discover("any name"), row.format != "CSV" || !row.samples.empty());
        EXPECT_EQ(columns(), row.columns);
        EXPECT_EQ(adapter.sampleRows, row.samples);
        EXPECT_EQ(platform.errors, row.errors);
        EXPECT_TRUE(adapter.fieldKeys.empty());
        EXPECT_EQ(jvm.takeCalls().back(), "disconnect()");
        EXPECT_EQ(jvm.leftOver(1), "");
    }
}

TEST_F(Discovery, TakesNoMoreSamplesThanTheLimitAsAnUnsignedNumber) {
    for (const char* format : {"CSV", "XML", "FIX", "OBJECTARRAY"}) {
        const std::string message = std::string(format) == "XML" ? "<T A=\"1\"/>" : "55=1|";
        for (const int limit : {adapter.discoveryRowLimit, 0, -1}) {
            browse(format, Texts(25, message), {{"matchStreamName", "0"}, {"fixVersion", "4.2"}});
            adapter.discoveryRowLimit = limit;
            EXPECT_EQ(adapter.discover(""), limit != 0 || std::string(format) != "CSV") << format;
            EXPECT_EQ(adapter.sampleRows.size(), limit < 0 ? 25U : limit > 0 ? 10U : 0U) << format;
        }
        adapter.discoveryRowLimit = 10;
    }
}

TEST_F(Discovery, BrowsesOnceAfterASuccessAndDisconnectsAfterEachAttempt) {
    browse("CSV", {"1"});
    jvm.answer("browseTextMessages", {nullptr, JNI_TRUE, true});
    EXPECT_FALSE(adapter.discover(""));
    EXPECT_EQ(jvm.takeCalls(), (Texts{"browseTextMessages()", "ExceptionDescribe", "AttachCurrentThread", "disconnect()"}));
    browse("CSV", {"1"});
    EXPECT_TRUE(adapter.discover(""));
    jvm.takeCalls();
    EXPECT_TRUE(adapter.discover(""));
    EXPECT_TRUE(jvm.takeCalls().empty());
    EXPECT_EQ(columns(), "column_0 integer,");
}

}  // namespace
