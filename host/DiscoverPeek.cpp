#include "host/DiscoverPeek.h"

#include <map>
#include <stdexcept>

#include "adapter/Adapter.h"
#include "fix/NewFixUtils.h"
#include "jms/JmsUtils.h"
#include "jmsin/XmlPatterns.h"

namespace host {

namespace {

constexpr char kOpcodeAttribute[] = "KEL_OPS";

// As much of an adapter as the bridge and the FIX codec need.
class Peeker : public Adapter {
public:
    explicit Peeker(Session& session) : settings_(session.settings) {
        connectionErrors = createConnectionErrors();
        discoveryMode = true;
        setCallbackReference(&session.context);
        setConnectionRowType(&session.rowType);
        setConnectionParams(&session.settings.connection);
    }
    ~Peeker() override { deleteConnectionErrors(connectionErrors); }

    bool reset() override {
        resetCommon();
        jms_.reset(this);
        if (isFix()) {
            fix_.reset(this);
            fix_.makeDictionary(parameter("fixVersion"));
        }
        // The client ID of a durable subscription is its receiver's, and browsing needs none.
        constexpr bool kDurable = false;
        constexpr bool kForInput = true;
        constexpr bool kBindSchema = false;
        return jms_.init(parameter("connectionFactory"), parameter("destinationType"),
                         parameter("destinationName"), kDurable, kForInput, kBindSchema, columnMap_,
                         parameter("jndiContextFactory"), parameter("jndiURL"), "", "");
    }
    void stop() override { jms_.disconnect(); }

    std::vector<std::string> messages() {
        std::vector<std::string> texts;
        jms_.browseTextMessages(texts);
        return texts;
    }

    std::optional<PeekedMessage> read(const std::string& text) {
        if (isFix()) return readFix(text);
        auto message = readXmlMessage(text);
        const bool isOther = message && message->element != settings_.streamName;
        return isOther && flagOf(settings_, "matchStreamName") ? std::nullopt : message;
    }

    // An adapter that only looks.
    void* getNext() override { return nullptr; }
    void putNext(void* /*row*/) override {}
    bool canDiscover() override { return false; }

private:
    bool isFix() const { return parameter("dataFormat") == "FIX"; }

    std::optional<PeekedMessage> readFix(const std::string& text) const {
        NewFixUtils::FieldMap fields;
        try {
            if (!fix_.parseFixMessage(text, fields)) return std::nullopt;
        } catch (const std::out_of_range&) {
            return std::nullopt;
        }
        PeekedMessage message;
        for (const auto& [tag, value] : fields) {
            std::string name;
            if (fix_.fieldNameByTag(tag, name)) message.attributes.push_back(name);
        }
        return message;
    }

    std::string parameter(const char* name) const { return parameterOf(settings_, name); }

    const Settings& settings_;
    JmsUtils jms_;
    NewFixUtils fix_;
    std::map<std::string, std::string> columnMap_;  // no names are mapped
};

}  // namespace

std::optional<PeekedMessage> readXmlMessage(std::string_view text) {
    static const xml::Pattern element(xml::kElement, xml::scanElement);
    static const xml::Pattern attribute(xml::kAttribute, xml::scanAttribute);
    const auto found = element.match(text);
    if (!found) return std::nullopt;
    const auto piece = [](std::string_view from, size_t begin, size_t end) {
        return std::string(from.substr(begin, end - begin));
    };
    PeekedMessage message{piece(text, found->nameBegin, found->nameEnd), {}};
    for (size_t at = found->valueBegin; at < found->valueEnd;) {
        const std::string_view rest = text.substr(at);
        const auto next = attribute.match(rest);
        if (!next) return std::nullopt;
        const std::string name = piece(rest, next->nameBegin, next->nameEnd);
        if (name != kOpcodeAttribute) message.attributes.push_back(name);
        at += next->end;
    }
    return message;
}

std::vector<PeekedMessage> peek(Session& session, size_t limit) {
    std::vector<PeekedMessage> messages;
    Peeker peeker(session);
    if (!peeker.reset()) return messages;
    for (const std::string& text : peeker.messages()) {
        if (messages.size() == limit) break;
        if (auto message = peeker.read(text)) messages.push_back(std::move(*message));
    }
    peeker.stop();
    return messages;
}

}  // namespace host
