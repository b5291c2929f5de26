// Any bytes as a FIX message: the field map is what a plain reading of the rules gives; the path without a
// map does, says and throws what the three operations do that it stands for; a row is composed as a plain
// writing composes it.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <numeric>
#include <random>
#include <stdexcept>

#include "fix/NewFixUtils.h"
#include "tests/doubles/IdleAdapter.h"
#include "tests/doubles/Platform.h"

namespace {

using Fields = NewFixUtils::FieldMap;

// As in fuzz/fix/etc: among the tags are texts that are no plain numbers, and one that has two names.
const std::pair<const char*, const char*> kColumns[] = {
    {"Symbol", "55"},      {"Price", "44"},       {"MsgType", "35"},
    {"BeginString", "8"},  {"Text", "58"},        {"Zero", "055"},
    {"Word", "word"},      {"Big", "65537"},      {"Wrapped", "4294967351"},
    {"Long", "123456789"}, {"SevenA", "1234567"}, {"OrderQty", "38"},
    {"Type", "35"},        {"Unknown", ""}};

void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

class Codec {
public:
    Codec() {
        platform_.serve(adapter_);
        setenv("KEL_HOME", KEL_SOURCE_DIR "/fuzz/fix", 1);
        for (NewFixUtils* one : {&direct_, &stepwise_}) {
            one->reset(&adapter_);
            require(one->makeDictionary("4.4"), "the dictionary loads");
        }
    }

    void check(const std::string& message) {
        chooseColumns(message);
        Fields fields;
        direct_.parseFixMessage(message, fields);
        require(fields == readPlainly(message, {}), "the map holds the fields of the plain reading");
        direct_.parseFixMessage(message, mixed_);
        mixedPlainly_ = readPlainly(message, mixedPlainly_);
        require(mixed_ == mixedPlainly_, "fields are added to those of former messages");
        if (mixed_.size() > 100) mixed_ = mixedPlainly_ = {};

        const auto steps = trace([&] { return byMap(message); });
        require(steps == trace([&] { return directly(message); }), "both paths do and say the same");
        if (steps.back() != "row") return;
        std::string composed;
        require(direct_.rowBufToFixMsg(row_, composed, "D") && composed == composePlainly(),
                "the message is that of the plain writing");
    }

private:
    // A few by the message's bytes, so that an input is always checked under the same ones.
    void chooseColumns(const std::string& message) {
        std::minstd_rand choice(std::accumulate(message.begin(), message.end(), 1u));
        chosen_.resize(choice() % 8);
        std::vector<host::Column> columns;
        for (size_t& column : chosen_) {
            column = choice() % std::size(kColumns);
            columns.push_back({kColumns[column].first, 5, false});
        }
        type_ = std::make_unique<host::RowType>("Trades", columns);
        adapter_.setConnectionRowType(type_.get());
    }

    Fields readPlainly(const std::string& message, Fields fields) const {
        std::vector<std::string> pieces;
        direct_.splitString(message, "\x01", pieces);
        for (const std::string& piece : pieces) {
            std::vector<std::string> parts;
            if (!piece.empty()) direct_.splitString(piece, "=", parts);
            if (parts.size() == 2) fields[parts[0]] = parts[1];
        }
        return fields;
    }

    std::string composePlainly() {
        std::string body = "35=D\x01";
        for (size_t i = 0; i < chosen_.size(); ++i) {
            const char* value = nullptr;
            require(getFieldAsStringWithIndex(row_, static_cast<int>(i), &value), "the row has the column");
            body += std::string(kColumns[chosen_[i]].second) + "=" + (value != nullptr ? value : "") + "\x01";
        }
        const std::string text =
            "8=FIX.4.4\x01"
            "9=" +
            std::to_string(body.size()) + "\x01" + body;
        int sum = 0;
        for (const char c : text) sum += static_cast<signed char>(c);
        const std::string checkSum = std::to_string(sum % 256);
        return text + "10=" + (checkSum.size() < 3 ? "0" : "") + checkSum + "\x01";
    }

    std::string byMap(const std::string& message) {
        Fields fields;
        stepwise_.parseFixMessage(message, fields);
        if (!stepwise_.validateFixMessage(fields, "D")) return "skipped";
        return stepwise_.fixMsgToRowBuf(fields, row_) ? "row" : "bad";
    }

    std::string directly(const std::string& message) {
        static const char* const kOutcomes[] = {"row", "skipped", "bad"};
        return kOutcomes[static_cast<int>(direct_.messageToRow(message, "D", row_))];
    }

    // All that was logged, the row, and the outcome or exception.
    template <typename Path>
    std::vector<std::string> trace(Path path) {
        clearData(row_);
        platform_.takeLogs();
        std::string outcome;
        try {
            outcome = path();
        } catch (const std::out_of_range& error) {
            outcome = error.what();
        }
        std::vector<std::string> all = platform_.takeLogs();
        all.push_back(fake::show(row_));
        all.push_back(outcome);
        return all;
    }

    fake::Platform platform_;
    std::unique_ptr<host::RowType> type_;
    IdleAdapter adapter_;
    NewFixUtils direct_;
    NewFixUtils stepwise_;
    void* row_ = createConnectionRow("RowByOrder");
    std::vector<size_t> chosen_;
    Fields mixed_;
    Fields mixedPlainly_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Codec codec;
    codec.check(std::string(reinterpret_cast<const char*>(data), size));
    return 0;
}
