#include "host/rows/RejectFile.h"

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <ctime>
#include <fstream>
#include <optional>

#include "datatypes/ValueFormatting.h"
#include "datatypes/ValueParsing.h"
#include "host/process/Console.h"
#include "host/process/Failure.h"
#include "host/process/Output.h"
#include "host/rows/Batch.h"
#include "host/rows/Rejects.h"

namespace host {

namespace {

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

// A member's text; "" where it has none.
std::string textOf(const rapidjson::Value& object, const char* name) {
    const auto found = object.FindMember(name);
    if (found == object.MemberEnd() || !found->value.IsString()) return {};
    return {found->value.GetString(), found->value.GetStringLength()};
}

std::optional<std::string> bodyOf(const rapidjson::Value& object) {
    if (object.HasMember("body")) return textOf(object, "body");
    if (!object.HasMember("bodyHex")) return std::nullopt;
    const std::string digits = textOf(object, "bodyHex");
    std::string bytes(digits.size() / 2, '\0');
    const char* error = nullptr;
    DataTypes::convertBinaryFromHexString(digits.c_str(), reinterpret_cast<unsigned char*>(bytes.data()),
                                          static_cast<unsigned int>(bytes.size()), error);
    return bytes;
}

KeptReject readReject(const rapidjson::Value& object, std::int64_t id) {
    KeptReject kept;
    kept.id = id;
    kept.at = textOf(object, "at");
    kept.messageId = textOf(object, "message");
    kept.reject = {stageOf(textOf(object, "stage")), textOf(object, "key"), textOf(object, "error"),
                   textOf(object, "column")};
    kept.message.kind = textOf(object, "format");
    kept.message.body = bodyOf(object);
    const auto envelope = object.FindMember("envelope");
    if (envelope == object.MemberEnd() || !envelope->value.IsArray()) return kept;
    for (const rapidjson::Value& field : envelope->value.GetArray()) {
        if (field.IsObject())
            kept.message.envelope.push_back(
                {textOf(field, "name"), textOf(field, "type"), textOf(field, "value")});
    }
    return kept;
}

void markReplayed(std::vector<KeptReject>& all, const rapidjson::Value& object) {
    const auto id = object.FindMember("replayed");
    for (KeptReject& kept : all) {
        if (id->value.IsInt64() && kept.id == id->value.GetInt64()) kept.replayedAt = textOf(object, "at");
    }
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
            if (output_ && batch.envelopes != nullptr)
                lines += lineOf(id, *reject, batch.envelopes->copyOf(i));
            say(rejectSentence(id, *reject, file_));
        }
        if (!lines.empty()) output_->write(lines);
    }

    const std::unique_ptr<RowSink> rows_;
    const std::string file_;
    std::optional<Output> output_;
};

}  // namespace

const RowShape kRejectShape = {"rejects", {R"({"at":)", R"({"replayed":)"}};

std::vector<KeptReject> readRejectFile(const std::string& file) {
    std::ifstream in(file);
    if (!in) throw Failure(file + " cannot be read; it must be the file of host.rejects.");
    std::vector<KeptReject> all;
    std::string line;
    for (std::int64_t number = 1; std::getline(in, line); ++number) {
        rapidjson::Document document;
        document.Parse(line.data(), line.size());
        if (document.HasParseError() || !document.IsObject()) {
            if (in.eof()) break;
            throw Failure(file + ':' + std::to_string(number) +
                          ": this is no reject; every line must be a JSON object that a run wrote.");
        }
        if (document.HasMember("replayed")) {
            markReplayed(all, document);
        } else {
            all.push_back(readReject(document, number));
        }
    }
    return all;
}

std::string replayedLine(std::int64_t id) {
    return R"({"replayed":)" + std::to_string(id) + R"(,"at":")" + now() + "\"}\n";
}

std::unique_ptr<RowSink> keepingRejects(std::unique_ptr<RowSink> rows, const std::string& file) {
    return std::make_unique<KeepingRejects>(std::move(rows), file);
}

}  // namespace host
