// The path without a field map against the three operations that it stands for.
#include "tests/fix/FixFixture.h"
#include "tests/fix/Messages.h"

namespace {

class FixIngestion : public FixFixture {
protected:
    NewFixUtils stepwise;

    std::string byMap(const std::string& message, const std::string& type) {
        NewFixUtils::FieldMap fields;
        stepwise.parseFixMessage(message, fields);
        if (!stepwise.validateFixMessage(fields, type)) return "skipped";
        return stepwise.fixMsgToRowBuf(fields, row) ? "row" : "bad";
    }

    std::string directly(const std::string& message, const std::string& type) {
        static const char* const kNames[] = {"row", "skipped", "bad"};
        return kNames[static_cast<int>(fix.messageToRow(message, type, row))];
    }

    // All that was said to the toolkit, the row, and the outcome or exception.
    template <typename Path>
    Calls traceOf(Path path) {
        clearData(row);
        toolkit.takeCalls();
        std::string outcome;
        try {
            outcome = path();
        } catch (const std::out_of_range& error) {
            outcome = error.what();
        }
        Calls all = toolkit.takeCalls();
        all.push_back(fake::show(*toolkit.row));
        all.push_back(outcome);
        return all;
    }
};

TEST_F(FixIngestion, DoesWhatTheThreeOperationsDo) {
    const std::vector<std::string> kNames = {"Symbol", "Price",  "MsgType", "BeginString",
                                             "Text",   "Zero",   "Word",    "Big",
                                             "Long",   "SevenA", "Later",   "OrderQty"};
    std::string dictionary =
        "55=Symbol\n44=Price\n35=MsgType\n8=BeginString\n58=Text\n055=Zero\nword=Word\n65537=Big\n"
        "123456789=Long\n1234567=SevenA\n38=OrderQty\n";
    stepwise.reset(&adapter);
    Messages messages;
    std::map<std::string, int> outcomes;
    for (int i = 0; i < 10000; ++i) {
        if (i % 5000 == 0) {
            writeDictionary("4.4", dictionary);
            ASSERT_TRUE(fix.makeDictionary("4.4") && stepwise.makeDictionary("4.4"));
            dictionary += "11=Later\n38=Symbol\n";
        }
        if (i % 20 == 10) {  // not together with the dictionary
            std::vector<std::string> columns(messages.pick(8));
            for (std::string& column : columns) column = kNames[messages.pick(kNames.size())];
            useColumns(columns);
        }
        const std::string message = messages.next();
        const std::string type = messages.pick(4) == 0 ? "8" : "D";
        const Calls expected = traceOf([&] { return byMap(message, type); });
        ASSERT_EQ(traceOf([&] { return directly(message, type); }), expected) << message;
        ++outcomes[expected.back().substr(0, 12)];  // the exception's text goes on with its numbers
    }
    EXPECT_EQ(outcomes.size(), 4u);
    for (const auto& [outcome, count] : outcomes) EXPECT_GT(count, 200) << outcome;
}

}  // namespace
