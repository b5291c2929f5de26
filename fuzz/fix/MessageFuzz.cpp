// Any bytes as a FIX message: the field map is what the plain reading of the rules gives, the path without a
// map lays the same row, and what is composed of that row reads back as the same fields.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "adapter/Adapter.h"
#include "fix/NewFixUtils.h"
#include "tests/doubles/FakeToolkit.h"

namespace {

using Fields = NewFixUtils::FieldMap;
using Outcome = NewFixUtils::Outcome;

void require(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "does not hold: %s\n", what);
    std::abort();
}

class IdleAdapter : public Adapter {
    void* getNext() override { return nullptr; }
    void putNext(void*) override {}
    void stop() override {}
    bool reset() override { return true; }
    bool canDiscover() override { return false; }
};

struct Codec {
    IdleAdapter adapter;
    NewFixUtils fix;
    void* row = createConnectionRow("RowByOrder");

    Codec() {
        fake::toolkit().columns = {{"Symbol"}, {"Side"},      {"Price"},
                                   {"Text"},   {"MsgSeqNum"}, {"TransactTime"}};
        adapter.setConnectionRowType(fake::handle("type"));
        fix.reset(&adapter);
        setenv("KEL_HOME", KEL_SOURCE_DIR, 1);
        require(fix.makeDictionary("4.4"), "the dictionary loads");
    }

    Fields readPlainly(const std::string& message) const {
        Fields fields;
        std::vector<std::string> pieces;
        fix.splitString(message, std::string(1, fix.fieldSeparator), pieces);
        for (const std::string& piece : pieces) {
            std::vector<std::string> parts;
            if (!piece.empty()) fix.splitString(piece, "=", parts);
            if (parts.size() == 2) fields[parts[0]] = parts[1];
        }
        return fields;
    }

    // The row as text, or what became of the message instead.
    template <typename Path>
    std::string laid(Path path) {
        clearData(row);
        try {
            const Outcome outcome = path();
            return outcome == Outcome::kRow   ? fake::show(*fake::toolkit().row)
                   : outcome == Outcome::kBad ? "bad"
                                              : "";
        } catch (const std::out_of_range& error) {
            return error.what();
        }
    }

    void check(const std::string& message) {
        Fields fields;
        fix.parseFixMessage(message, fields);
        require(fields == readPlainly(message), "the map holds the fields of the plain reading");

        const std::string byMap = laid([&] {
            if (!fix.validateFixMessage(fields, "D")) return Outcome::kSkipped;
            return fix.fixMsgToRowBuf(fields, row) ? Outcome::kRow : Outcome::kBad;
        });
        const std::string directly = laid([&] { return fix.messageToRow(message, "D", row); });
        require(byMap == directly, "both paths lay the same row");

        std::string composed;
        Fields again;
        if (directly.starts_with("i ") && fix.rowBufToFixMsg(row, composed, "D")) {
            fix.parseFixMessage(composed, again);
            require(laid([&] { return fix.messageToRow(composed, "D", row); }).starts_with("i "),
                    "a composed message is a valid one");
            for (const char* tag : {"55", "54", "44", "58", "34", "60"})
                require(again[tag] == fields[tag].c_str(), "a composed message has the row's values");
        }
        fake::toolkit().calls.clear();
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static Codec codec;
    codec.check(std::string(reinterpret_cast<const char*>(data), size));
    return 0;
}
