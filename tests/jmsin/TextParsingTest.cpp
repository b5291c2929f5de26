#include "tests/jmsin/AdapterFixture.h"

namespace {

using TextParsing = AdapterFixture;

const char kNoName[] = "300288-3_JMSIN_ADAPTER_NOSTREAMNAME ";
const char kNoOp[] = "300289-3_JMSIN_ADAPTER_NOSTREAMOP ";
const char kFailed[] = "300292-3_JMSIN_ADAPTER_PARSEXMLMSG_FAILED";
const char kBadAttribute[] = "300293-3_JMSIN_ADAPTER_PARSEXMLMSG_BADATTR ";

TEST_F(TextParsing, Csv) {
    const struct {
        const char* delimiter;
        bool prefix;
        const char* text;
        bool parsed;
        const char* row;
        std::string error = "";
    } kRows[] = {
        {",", true, "Trades,p,IBM,,25.5", true, "p IBM,null,25.5"},
        {",", true, "Trades,p,IBM,", true, "p IBM,null"},
        {",", true, "Trades,upsert,IBM", true, "u IBM"},
        {",", true, "Trades,p", true, "p"},
        {",", true, "Trades,p,", true, "p null"},
        {",", true, "Trades", true, "-"},
        {",", true, "Trades,", true, "-"},
        {",", true, "Trades,,IBM", false, "-", kNoOp},
        {",", true, ",p,IBM", false, "-", kNoName},
        {",", true, "Quotes,p,IBM", false, "-"},
        {",", true, "trades,p,IBM", false, "-"},
        {"|", false, "IBM|100", true, "- IBM,100"},
        {",", false, "a,,", true, "- a,null,null"},
        {",", false, ",", true, "- null,null"},
        {",", false, "a", true, "- a"},
        {"::", false, "a:b::c:::d::", true, "- a:b,c,:d,null"},
        {"::", true, "Trades::i::a:", true, "i a:"},
        {",", false, "", true, "- null"},
        {",", true, "", false, "-", kNoName},
        {",", false, "\"a,b\"", true, "- \"a,b\""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        start("CSV", {{"delimiter", row.delimiter}, {"expectStreamNameOpcode", row.prefix ? "1" : "0"}});
        std::string text = row.text;
        EXPECT_EQ(adapter.parseCsvMessage(text, false), row.parsed);
        EXPECT_EQ(text, row.text);
        EXPECT_EQ(fake::show(fake::rows.back()), row.row);
        EXPECT_EQ(platform.errors, row.error.empty() ? Texts{} : Texts{row.error + row.text});
    }
    start("CSV");
    std::string text = std::string("Trades\0,p,IBM", 13);  // a name that only begins like the stream's
    EXPECT_FALSE(adapter.parseCsvMessage(text, false));
    platform.takeLogs();
    EXPECT_TRUE(adapter.parseCsvMessage(text = "Trades,p,IBM", true));
    EXPECT_EQ(fake::show(fake::rows.back()), "- Trades,p,IBM");
    EXPECT_EQ(platform.logs, (Texts{"7 300287-7_JMSIN_ADAPTER_PARSECSVMSG", "7 300290-7_JMSIN_ADAPTER_PARSECSVMSG_END"}));
}

TEST_F(TextParsing, Xml) {
    const struct {
        bool match;
        const char* text;
        bool parsed;
        const char* row;
        const char* names;
        std::string error = "";
    } kRows[] = {
        {true, R"(<Trades Symbol="IBM" Price="25.5" KEL_OPS="p"/>)", true, "- Symbol=IBM,Price=25.5,KEL_OPS=p", "Symbol,Price,"},
        {true, "text < Trades\t A = \"1 > 0 &amp; 'x'\"\v/> <Trades B=\"2\"/>", true, "- A=1 > 0 &amp; 'x'", "A,"},
        {true, "<Trades/>", true, "-", ""},
        {true, "<Trades A=\"\"/>", true, "- A=", "A,"},
        {true, "<Trades A=\"1\"B=\"2\" />", true, "- A=1,B=2", "A,B,"},
        {true, "<Quotes A=\"1\"/>", false, "-", ""},
        {false, "<Quotes A=\"1\"/>", true, "- A=1", "A,"},
        {true, "<Trades Symbol=\"IBM\"></Trades>", false, "-", "", kFailed},
        {true, "", false, "-", "", kFailed},
        {true, "<Trades Symbol='IBM'/>", false, "-", "", std::string(kBadAttribute) + "7"},
        {true, "text <Trades A='1'/>", false, "-", "", std::string(kBadAttribute) + "12"},
        {true, "<Trades A=\"1\" B/>", false, "- A=1", "A,", std::string(kBadAttribute) + "13"},
        // No line feed before the attributes either: the next element is the one.
        {true, "<Trades\nA=\"1\"/> <Trades B=\"2\"/>", true, "- B=2", "B,"},
        // The first "/>" ends the element even inside quotes; an attribute reads on past it.
        {true, "<Trades A=\"a/>b\" B=\"2\"/>", true, "- A=a/>b", "A,"},
        // The value must not hold a line feed, nor the attributes before "/>".
        {true, "<Trades A=\"1\n2\"/>", false, "-", "", kFailed},
        {true, "<x <Trades A=\"1\"/>", false, "-", ""},
    };
    for (const auto& row : kRows) {
        SCOPED_TRACE(row.text);
        start("XML", {{"matchStreamName", row.match ? "1" : "0"}});
        std::string text = row.text, joined;
        Texts names;
        EXPECT_EQ(adapter.parseXmlMessage(text, &names), row.parsed);
        for (const std::string& name : names) joined += name + ",";
        EXPECT_EQ(joined, row.names);
        EXPECT_EQ(fake::show(fake::rows.back()), row.row);
        EXPECT_EQ(platform.errors, row.error.empty() ? Texts{} : Texts{row.error});
    }
}

}  // namespace
