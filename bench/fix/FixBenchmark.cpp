// The FIX codec beside QuickFIX and beside the plain reading of the same rules, over the same bytes. The
// label of a benchmark is its message; parsing and composing are compared by their time for one message.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "fix/NewFixUtils.h"
#include "peers/QuickFix.h"
#include "tests/doubles/IdleAdapter.h"

namespace {

struct Row {
    std::array<std::string, 10> values;
    std::array<bool, 10> present{};
    char op = 0;
};

constexpr std::array<const char*, 10> kColumns = {"Symbol",  "Side",    "OrderQty",     "Price",    "OrdType",
                                                  "ClOrdID", "Account", "TransactTime", "Currency", "Text"};
constexpr std::array<int, 10> kTags = {55, 54, 38, 44, 40, 11, 1, 60, 15, 58};  // of the columns

}  // namespace

// The toolkit's part, as lean as a toolkit can be: what is measured is the codec. These stand before the
// functions of the same names in the stand-in server's library.
extern "C" {
void logMessage(void*, int, const char*) {}
int getColumnCount(void*, void*) { return kColumns.size(); }
const char* getColumnName(void*, void*, int index) { return kColumns[static_cast<size_t>(index)]; }
bool setFieldAsStringWithIndex(void* handle, int index, const char* value) {
    Row& row = *static_cast<Row*>(handle);
    row.present[static_cast<size_t>(index)] = value != nullptr;
    if (value != nullptr) row.values[static_cast<size_t>(index)] = value;
    return true;
}
bool getFieldAsStringWithIndex(void* handle, int index, const char** value) {
    const Row& row = *static_cast<Row*>(handle);
    *value =
        row.present[static_cast<size_t>(index)] ? row.values[static_cast<size_t>(index)].c_str() : nullptr;
    return true;
}
void setOp(void* handle, char op) { static_cast<Row*>(handle)->op = op; }
}

namespace {

struct Sample {
    const char* name;
    const char* version;
    const char* type;
    std::string text;
};

// With body length and checksum, and "|" for the separator.
std::string framed(const NewFixUtils& fix, const std::string& begin, const std::string& body) {
    std::string text = begin + "|9=" + std::to_string(body.size()) + "|" + body;
    for (char& c : text) c = c == '|' ? '\x01' : c;
    char checkSum[16];
    std::snprintf(checkSum, sizeof checkSum, "10=%03d\x01", fix.calculateCheckSum(text));
    return text + checkSum;
}

struct Fixture {
    IdleAdapter adapter;
    NewFixUtils fix;
    Row row;
    std::array<Sample, 2> samples = {
        Sample{"NewOrderSingle", "4.2", "D",
               framed(fix, "8=FIX.4.2",
                      "35=D|49=BUYSIDE01|56=BROKER02|34=2187|50=TRADER7|52=20240215-14:30:15.123|"
                      "11=ORD-20240215-000183|1=ACC-7731|21=1|55=IBM|48=ZZ0000000025|22=4|207=XNYS|54=1|"
                      "60=20240215-14:30:15.098|38=2500|40=2|44=184.3725|15=USD|59=0|58=work it|")},
        Sample{"ExecutionReport", "4.4", "8",
               framed(fix, "8=FIX.4.4",
                      "35=8|49=BROKER02|56=BUYSIDE01|34=55218|57=TRADER7|52=20240215-14:30:15.187|"
                      "37=BRK-00009182-A|11=ORD-20240215-000183|17=EX-20240215-44810|150=F|39=1|1=ACC-7731|"
                      "55=IBM|48=ZZ0000000025|22=4|461=ESXXXX|207=XNYS|54=1|38=2500|40=2|44=184.3725|15=USD|"
                      "59=0|32=700|31=184.3700|30=XNYS|151=1800|14=700|6=184.3700|60=20240215-14:30:15.180|"
                      "75=20240215|63=0|64=20240220|381=129059.00|453=2|448=BUYSIDE01|447=D|452=1|"
                      "448=TRADER7|447=D|452=11|382=1|375=BROKER03|337=DEALER9|437=700|"
                      "438=20240215-14:30:15.179|12=4.50|13=3|528=A|529=1|110=100|111=500|"
                      "58=partial fill, the rest works on the book|")}};

    Fixture() {
        setenv("KEL_HOME", KEL_SOURCE_DIR, 1);
        fix.reset(&adapter);
        useVersion("4.2");
        fix.messageToRow(samples[0].text, "D", &row);
    }
    void useVersion(const std::string& version) {
        if (!fix.makeDictionary(version)) std::abort();
    }
};

Fixture& fixture() {
    static Fixture one;
    return one;
}

// What the rules say, word by word: the message is split into texts, and each of these again.
bool parsePlainly(const NewFixUtils& fix, const std::string& message, NewFixUtils::FieldMap& fields) {
    std::vector<std::string> pieces;
    fix.splitString(message, std::string(1, fix.fieldSeparator), pieces);
    for (const std::string& piece : pieces) {
        if (piece.empty()) continue;
        std::vector<std::string> parts;
        fix.splitString(piece, "=", parts);
        if (parts.size() == 2) fields[parts[0]] = parts[1];
    }
    return true;
}

// Runs the work over one of the sample messages, after the dictionary of its version was loaded.
template <typename Work>
void over(benchmark::State& state, Work work) {
    Fixture& all = fixture();
    const Sample& sample = all.samples[static_cast<size_t>(state.range(0))];
    all.useVersion(sample.version);
    state.SetLabel(std::string(sample.name) + " of " + std::to_string(sample.text.size()) + " bytes");
    for (auto _ : state) {
        work(all, sample);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}

void parseQuickFix(benchmark::State& state) {
    over(state, [](Fixture&, const Sample& sample) { quickfix::parse(sample.text); });
}
void parsePlainlyIntoNewMap(benchmark::State& state) {
    over(state, [](Fixture& all, const Sample& sample) {
        NewFixUtils::FieldMap fields;
        parsePlainly(all.fix, sample.text, fields);
    });
}
void parseIntoNewMap(benchmark::State& state) {
    over(state, [](Fixture& all, const Sample& sample) {
        NewFixUtils::FieldMap fields;
        all.fix.parseFixMessage(sample.text, fields);
    });
}
void parseIntoReusedMap(benchmark::State& state) {
    NewFixUtils::FieldMap fields;
    over(state,
         [&fields](Fixture& all, const Sample& sample) { all.fix.parseFixMessage(sample.text, fields); });
}
void messageToRowByMap(benchmark::State& state) {
    over(state, [](Fixture& all, const Sample& sample) {
        NewFixUtils::FieldMap fields;
        if (!all.fix.parseFixMessage(sample.text, fields) ||
            !all.fix.validateFixMessage(fields, sample.type) || !all.fix.fixMsgToRowBuf(fields, &all.row)) {
            std::abort();
        }
    });
}
void messageToRow(benchmark::State& state) {
    over(state, [](Fixture& all, const Sample& sample) {
        if (all.fix.messageToRow(sample.text, sample.type, &all.row) != NewFixUtils::Outcome::kRow)
            std::abort();
    });
}

void composeQuickFix(benchmark::State& state) {
    Fixture& all = fixture();
    std::vector<std::pair<int, const char*>> fields;
    for (auto _ : state) {
        fields.clear();
        for (size_t i = 0; i < kTags.size(); ++i) {
            const char* value = nullptr;
            if (!all.adapter.getFieldAsStringWithIndex(&all.row, static_cast<int>(i), &value)) std::abort();
            fields.emplace_back(kTags[i], value);
        }
        benchmark::DoNotOptimize(quickfix::compose("4.2", "D", fields));
    }
}
void compose(benchmark::State& state) {
    Fixture& all = fixture();
    all.useVersion("4.2");
    std::string message;
    for (auto _ : state) {
        if (!all.fix.rowBufToFixMsg(&all.row, message, "D")) std::abort();
        benchmark::ClobberMemory();
    }
    state.SetLabel(std::to_string(message.size()) + " bytes");
}

// Byte by byte: the empty statement keeps the compiler from taking several at once.
int scalarCheckSum(const std::string& text) {
    int32_t sum = 0;
    for (const char c : text) {
        sum += static_cast<signed char>(c);
        asm volatile("" : "+r"(sum));
    }
    return sum % 256;
}
void checkSumScalar(benchmark::State& state) {
    const std::string text(static_cast<size_t>(state.range(0)), 'x');
    for (auto _ : state) benchmark::DoNotOptimize(scalarCheckSum(text));
}
void checkSum(benchmark::State& state) {
    const std::string text(static_cast<size_t>(state.range(0)), 'x');
    for (auto _ : state) benchmark::DoNotOptimize(fixture().fix.calculateCheckSum(text));
}

BENCHMARK(parseQuickFix)->Arg(0)->Arg(1);
BENCHMARK(parsePlainlyIntoNewMap)->Arg(0)->Arg(1);
BENCHMARK(parseIntoNewMap)->Arg(0)->Arg(1);
BENCHMARK(parseIntoReusedMap)->Arg(0)->Arg(1);
BENCHMARK(messageToRowByMap)->Arg(0)->Arg(1);
BENCHMARK(messageToRow)->Arg(0)->Arg(1);
BENCHMARK(composeQuickFix);
BENCHMARK(compose);
BENCHMARK(checkSumScalar)->Arg(250);
BENCHMARK(checkSum)->Arg(250);

}  // namespace

BENCHMARK_MAIN();
