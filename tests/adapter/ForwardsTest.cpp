// Each forward calls its toolkit function with its own arguments in their order, behind the callback reference where
// the function takes one, and hands on the answer. Of that the compiler sees little: most are untyped pointers.
#include <gtest/gtest.h>

#include <tuple>
#include <utility>

#include "tests/doubles/IdleAdapter.h"
#include "tests/doubles/RecordingToolkit.h"

namespace {

using fake::calls;
using fake::Word;

class Forwards : public ::testing::Test {
protected:
    Forwards() { adapter_.callbackReference = &callback_; }

    // Twice, as a flag has but two values.
    template <typename Answer, typename... Arguments, typename Forwarded, typename... All>
    void check(const std::string& function, Answer (Adapter::*member)(Arguments...), Forwarded (*)(All...)) {
        checked_.insert(function);
        for (const Word round : {1, 2}) {
            auto given = distinct<Arguments...>(round, std::index_sequence_for<Arguments...>());
            fake::Call expected{function, {}};
            if (sizeof...(All) > sizeof...(Arguments)) expected.arguments.push_back(fake::toWord<void*>(&callback_));
            std::apply([&](auto... each) { (expected.arguments.push_back(fake::toWord(each)), ...); }, given);
            calls.clear();
            checkAnswer<Answer>(function, round, [&] { return std::apply(member, std::tuple_cat(std::tie(adapter_), given)); });
            ASSERT_EQ(calls.size(), 1U) << function;
            EXPECT_EQ(calls[0].function, expected.function);
            EXPECT_EQ(calls[0].arguments, expected.arguments) << function;
        }
    }

    std::set<std::string> checked_;

private:
    template <typename... Arguments, size_t... kAt>
    static auto distinct(Word round, std::index_sequence<kAt...>) {
        return std::tuple{fake::fromWord<Arguments>(10 * (kAt + 1) + round)...};
    }

    template <typename Answer, typename Forward>
    static void checkAnswer(const std::string& function, Word round, Forward forward) {
        if constexpr (std::is_void_v<Answer>) {
            forward();
        } else if constexpr (std::is_same_v<Answer, std::string>) {
            fake::answer = round == 1 ? fake::toWord(new char[2]{'t', '\0'}) : 0;  // the forward releases the buffer
            EXPECT_EQ(forward(), round == 1 ? "t" : "") << function;
        } else {
            fake::answer = 70 + round;
            EXPECT_EQ(forward(), fake::fromWord<Answer>(70 + round)) << function;
        }
    }

    IdleAdapter adapter_;
    int callback_ = 0;
};

template <typename... Arguments>
struct Overload {
    template <typename Answer>
    static auto of(Answer (Adapter::*member)(Arguments...)) {
        return member;
    }
};

#define RENAMED(member, function) check(#function, &Adapter::member, ::function)
#define SAME(name) RENAMED(name, name)
#define OVERLOAD(member, function, ...) check(#function, Overload<__VA_ARGS__>::of(&Adapter::member), ::function)

TEST_F(Forwards, CallTheirFunction) {
    using Text = const char*;
    OVERLOAD(getL10NMessage, getL10NMessage, Text);
    OVERLOAD(getL10NMessage, getL10NMessageWithParam, Text, Text);
    OVERLOAD(getL10NMessage, getL10NMessageWithTwoParams, Text, Text, Text);
    OVERLOAD(getL10NMessage, getL10NMessageWithThreeParams, Text, Text, Text, Text);
    OVERLOAD(getL10NMessage, getL10NMessageWithFourParams, Text, Text, Text, Text, Text);
    OVERLOAD(getL10NMessage, getL10NMessageWithFiveParams, Text, Text, Text, Text, Text, Text);
    OVERLOAD(getL10NMessage, getL10NMessageWithMultParams, Text, int, Text*);
    OVERLOAD(getL10NMessageAsString, getL10NMessage, Text);
    OVERLOAD(getL10NMessageAsString, getL10NMessageWithParam, Text, Text);
    OVERLOAD(getL10NMessageAsString, getL10NMessageWithTwoParams, Text, Text, Text);
    OVERLOAD(getL10NMessageAsString, getL10NMessageWithThreeParams, Text, Text, Text, Text);
    OVERLOAD(getL10NMessageAsString, getL10NMessageWithFourParams, Text, Text, Text, Text, Text);
    OVERLOAD(getL10NMessageAsString, getL10NMessageWithFiveParams, Text, Text, Text, Text, Text, Text);
    OVERLOAD(getL10NMessageAsString, getL10NMessageWithMultParams, Text, int, Text*);
    OVERLOAD(prepareOrder, prepareOrder, void*);
    OVERLOAD(prepareOrder, prepareOrderWithRowType, void*, void*);
    OVERLOAD(setPermutation, setPermutation, void*, int, const int*);
    OVERLOAD(setPermutation, setPermutationWithRow, void*, void*);

    RENAMED(setState, setAdapterState);
    RENAMED(getState, getAdapterState);
    RENAMED(getAdapterName, getName);
    RENAMED(callNotifyConnState, notifyConnState);
    RENAMED(callPostStartSync, postStartSync);
    RENAMED(callPostEndSync, postEndSync);
    RENAMED(allocPool, alloc);
    RENAMED(freePool, freeConnectionRow);

    SAME(deleteL10NMessage), SAME(checkErrorSeverity), SAME(getErrorSeverity), SAME(getTimeContext), SAME(activateOutput),
        SAME(deactivateOutput), SAME(getConnectionParamString), SAME(getConnectionParamInt64_t), SAME(getConnectionParamAsString),
        SAME(doesConnectionParamExist), SAME(addConnectionParam), SAME(addParam), SAME(getConfiguredSections), SAME(createConnectionErrors),
        SAME(clearConnectionErrors), SAME(deleteConnectionErrors), SAME(addGeneral), SAME(createConnectionRow), SAME(deleteConnectionRow),
        SAME(clearData), SAME(size), SAME(setFieldAsStringWithIndex), SAME(getFieldAsStringWithIndex), SAME(setFieldAsStringWithKey),
        SAME(getFieldAsStringWithKey), SAME(setOp), SAME(getOp), SAME(getFlagsAsString), SAME(setStreamType), SAME(setStreamName),
        SAME(toRow), SAME(fromRow), SAME(allocBuffer), SAME(permuteCsvIn), SAME(setExternalCount), SAME(setSeparator), SAME(setWithService),
        SAME(isFailed), SAME(isDirect), SAME(setPrototype), SAME(setTimeFormat), SAME(setDateFormat), SAME(setTimestampFormat),
        SAME(createConnectionRowPool), SAME(deleteConnectionRowPool), SAME(createConnectionPermutation), SAME(deleteConnectionPermutation),
        SAME(clearConnectionPermutation), SAME(setExternalOrder), SAME(setExternalOrderWithConnRowTypeAsParam), SAME(setPlatOrder),
        SAME(plat2extWithFieldName), SAME(plat2extWithFieldNum), SAME(ext2platWithFieldName), SAME(ext2platWithIndex),
        SAME(getColumnNameFromExtOrder), SAME(getExtOrder), SAME(getExtOrderSize), SAME(postTransaction), SAME(postTransactionToStream),
        SAME(getTransaction), SAME(getConnectionRowType), SAME(createConnectionRawTrans), SAME(deleteConnectionRawTrans),
        SAME(clearConnectionRawTrans), SAME(getConnectionRawTrans), SAME(getConnectionRawTransSize), SAME(pushBackConnectionRawTrans),
        SAME(createGDSupport), SAME(deleteGDSupport), SAME(enableGDMode), SAME(setGDKeyColumnName), SAME(setOpcodeColumnName),
        SAME(getGDKey), SAME(addLocalSession), SAME(removeLocalSession), SAME(getGWHostPort), SAME(getDefaultConnectionInfo),
        SAME(getPlatformConnectivity);

    // These have members with rules of their own.
    checked_.merge(std::set<std::string>{"logMessage", "getColumnCount", "getColumnName", "getColumnDatatype", "isKeyColumn",
                                         "getStreamName", "empty", "getAdapterError", "addAdapterStatistics"});
    EXPECT_EQ(checked_, fake::kToolkitFunctions) << "each function of the toolkit has a forward here";
}

}  // namespace
