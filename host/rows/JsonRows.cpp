#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <array>
#include <charconv>
#include <cmath>

#include "host/rows/RowForms.h"
#include "host/rows/TextSink.h"
#include "host/values/ModifiedUtf8.h"

namespace host {

namespace {

class JsonLines : public RowFormat {
public:
    explicit JsonLines(const RowType& type) : stream_(toUtf8(type.streamName)) {
        for (const Column& column : type.columns) names_.push_back(toUtf8(column.name));
    }

    void append(const ServerRow& row, std::string& out) override {
        buffer_.Clear();
        writer_.Reset(buffer_);
        writer_.StartObject();
        key("stream");
        text(stream_);
        key("op");
        writer_.String(&row.op, 1);
        key("seq");
        writer_.Int64(row.sequence);
        key("row");
        writer_.StartObject();
        for (size_t i = 0; i < names_.size(); ++i) {
            key(names_[i]);
            std::visit([this](const auto& value) { write(value); }, row.values[i]);
        }
        writer_.EndObject();
        writer_.EndObject();
        out.append(buffer_.GetString(), buffer_.GetSize()) += '\n';
    }

private:
    void key(std::string_view name) {
        writer_.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
    }
    void text(std::string_view value) {
        writer_.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
    }

    void write(std::monostate) { writer_.Null(); }
    void write(bool value) { writer_.Bool(value); }
    void write(std::int64_t value) { writer_.Int64(value); }
    void write(const std::string& modified) {
        utf8_.clear();
        appendUtf8(modified, utf8_);
        text(utf8_);
    }
    // The shortest form that reads back. JSON has no infinities and no NaN: they are written as texts.
    void write(double value) {
        if (!std::isfinite(value)) {
            text(std::isnan(value) ? "NaN" : value > 0 ? "Infinity" : "-Infinity");
            return;
        }
        std::array<char, 32> digits;
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
        writer_.RawValue(digits.data(), static_cast<size_t>(end - digits.data()), rapidjson::kNumberType);
    }

    std::string stream_;
    std::vector<std::string> names_;
    std::string utf8_;
    rapidjson::StringBuffer buffer_;
    rapidjson::Writer<rapidjson::StringBuffer> writer_;
};

}  // namespace

const RowShape kJsonShape = {"jsonl", {R"({"stream":)"}};

std::unique_ptr<RowFormat> makeJsonLines(const RowType& type) { return std::make_unique<JsonLines>(type); }

std::unique_ptr<RowSink> makeJsonSink(const RowType& type, const std::string& file) {
    return std::make_unique<TextSink>(file, kJsonShape, [&type](bool) { return makeJsonLines(type); });
}

}  // namespace host
