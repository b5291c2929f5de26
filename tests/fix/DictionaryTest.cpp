#include "tests/fix/FixFixture.h"

namespace {

class FixDictionary : public FixFixture {
protected:
    std::string nameOf(const std::string& tag) {
        std::string name = "untouched";
        fix.fieldNameByTag(tag, name);
        return name;
    }
};

TEST_F(FixDictionary, TakesTheFirstPairOfWordsOfEachLine) {
    writeDictionary("x",
                    "35=MsgType\n35=MessageType\n# 8=BeginString\n9=\n=Name\na=b=c\n35 = Spaces\n\n"
                    "  55=Symbol  // instrument\n49=SenderCompID\r\n44=\xC3\xA9t\n1_a=under_score\n54=Side");
    ASSERT_TRUE(fix.makeDictionary("x"));
    expectLogs("makeDictionary", "");
    std::string names;
    for (const char* tag : {"35", "8", "a", "55", "49", "1_a", "54"}) names += nameOf(tag) + " ";
    EXPECT_EQ(names, "MessageType BeginString b Symbol SenderCompID under_score Side ");
    for (const char* tag : {"9", "", "b", "44", "999"}) EXPECT_EQ(nameOf(tag), "untouched");

    // Both names of a tag stay, and a further dictionary adds to them.
    platform.useStrings(adapter, {"MsgType", "MessageType", "Symbol", "Instrument"});
    EXPECT_FALSE(fix.fixMsgToRowBuf({{"35", "D"}, {"55", "IBM"}}, row));
    writeDictionary("y", "7=BeginSeqNo\n55=Instrument\n");
    ASSERT_TRUE(fix.makeDictionary("y"));
    EXPECT_EQ(nameOf("55") + nameOf("7") + nameOf("54"), "InstrumentBeginSeqNoSide");
    EXPECT_TRUE(fix.fixMsgToRowBuf({{"35", "D"}, {"55", "IBM"}}, row));
    EXPECT_EQ(fake::show(row), "i D,D,IBM,IBM");
}

TEST_F(FixDictionary, FailuresKeepTheNamesAndExpectTheVersion) {
    writeDictionary("1", "55=Symbol\n");
    ASSERT_TRUE(fix.makeDictionary("1"));
    const std::string file = home / "etc/fix/dictionary";
    std::filesystem::create_directory(file + "dir.txt");
    EXPECT_FALSE(fix.makeDictionary("2") || fix.makeDictionary("dir"));
    unsetenv("KEL_HOME");
    EXPECT_FALSE(fix.makeDictionary("3"));
    setenv("KEL_HOME", "", 1);
    EXPECT_FALSE(fix.makeDictionary("4"));
    const std::string kCannot = "Cannot open file " + file, kNotSet = "KEL_HOME environment variable not set";
    EXPECT_EQ(platform.errors, (Texts{kCannot + "2.txt", kCannot + "dir.txt", kNotSet, kNotSet}));
    EXPECT_EQ(nameOf("55"), "Symbol");
    EXPECT_TRUE(fix.validateFixMessage({{"8", "FIX.4"}, {"35", "D"}}, "D"));
}

}  // namespace
