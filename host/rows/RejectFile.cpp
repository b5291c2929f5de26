#include "host/rows/RejectFile.h"

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <ctime>
#include <optional>

#include "datatypes/ValueFormatting.h"
#include "host/process/Console.h"
#include "host/process/Output.h"
#include "host/rows/Batch.h"
#include "host/rows/Rejects.h"

namespace host {

namespace {

const RowShape kRejectShape = {"rejects", {R"({"at":)", R"({"replayed":)"}};

using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

std::string now() {
    const std::time_t seconds = std::time(nullptr);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[sizeof "2024-01-31T23:50:00Z"];
    std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}

void member(Writer& writer, const char* name, const std::string& value) {
    writer.Key(name);
    writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
}

void writeBody(Writer& writer, const MessageCopy& copy) {
    if (!copy.body) return;
    if (copy.kind == "text") {
        member(writer, "body", *copy.body);
        return;
    }
    std::string digits;
    const auto* bytes = reinterpret_cast<const unsigned char*>(copy.body->data());
    DataTypes::convertBinaryToHexString(bytes, static_cast<std::uint32_t>(copy.body->size()), digits);
    member(writer, "bodyHex", digits);
}

std::string lineOf(const std::string& id, const Reject& reject, const MessageCopy& copy) {
    rapidjson::StringBuffer buffer;
    Writer writer(buffer);
    writer.StartObject();
    member(writer, "at", now());
    member(writer, "message", id);
    member(writer, "stage", nameOf(reject.stage));
    member(writer, "key", reject.key);
    member(writer, "error", reject.text);
    member(writer, "column", reject.column);
    member(writer, "format", copy.kind);
    writeBody(writer, copy);
    writer.Key("envelope");
    writer.StartArray();
    for (const EnvelopeField& field : copy.envelope) {
        writer.StartObject();
        member(writer, "name", field.name);
        member(writer, "type", field.type);
        member(writer, "value", field.value);
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
    return std::string(buffer.GetString(), buffer.GetSize()) + '\n';
}

class KeepingRejects : public RowSink {
public:
    KeepingRejects(std::unique_ptr<RowSink> rows, const std::string& file)
        : rows_(std::move(rows)), file_(file) {
        if (!file.empty()) output_.emplace(file, &kRejectShape);
    }

    void open() override { rows_->open(); }

    Kept keep(Batch& batch) override {
        tell(batch);
        return rows_->keep(batch);
    }

    void settled(bool isConfirmed) override { rows_->settled(isConfirmed); }
    void idle() override { rows_->idle(); }
    void stop() override {
        if (output_) output_->stop();
        rows_->stop();
    }

private:
    void tell(const Batch& batch) {
        std::vector<std::string> ids;  // asked for only where there is something to tell
        std::string lines;
        for (size_t i = 0; i < batch.messages.size(); ++i) {
            const auto& reject = batch.messages[i].reject;
            if (!reject) continue;
            if (ids.empty() && batch.envelopes != nullptr) ids = batch.envelopes->ids();
            const std::string id = i < ids.size() ? ids[i] : std::string();
            if (output_) lines += lineOf(id, *reject, batch.envelopes->copyOf(i));
            say(rejectSentence(id, *reject, file_));
        }
        if (!lines.empty()) output_->write(lines);
    }

    const std::unique_ptr<RowSink> rows_;
    const std::string file_;
    std::optional<Output> output_;
};

}  // namespace

std::unique_ptr<RowSink> keepingRejects(std::unique_ptr<RowSink> rows, const std::string& file) {
    return std::make_unique<KeepingRejects>(std::move(rows), file);
}

}  // namespace host
