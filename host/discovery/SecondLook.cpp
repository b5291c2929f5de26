#include "host/discovery/SecondLook.h"

#include <algorithm>
#include <map>
#include <stdexcept>

#include "adapter/Adapter.h"
#include "fix/NewFixUtils.h"
#include "host/connection/StoppableReset.h"
#include "jms/JmsUtils.h"
#include "jmsin/XmlScanner.h"

namespace host {

// As much of an adapter as the bridge and the FIX codec need.
class SecondLook::Peeker : public Adapter {
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
        return connecting_.run([this] { return connect(); });
    }
    void stop() override {
        connecting_.stop([this] { jms_.disconnect(); });
    }

    bool connect() {
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
            if (fix_.fieldNameByTag(tag, name)) message.fields.emplace_back(name, value);
        }
        return message;
    }

    std::string parameter(const char* name) const { return parameterOf(settings_, name); }

    const Settings& settings_;
    JmsUtils jms_;
    StoppableReset connecting_;
    NewFixUtils fix_;
    std::map<std::string, std::string> columnMap_;  // no names are mapped
};

const std::string* PeekedMessage::find(const std::string& name) const {
    const auto found =
        std::find_if(fields.rbegin(), fields.rend(), [&](const auto& field) { return field.first == name; });
    return found != fields.rend() ? &found->second : nullptr;
}

std::optional<PeekedMessage> readXmlMessage(std::string_view text) {
    const auto element = xml::findElement(text);
    if (!element) return std::nullopt;
    PeekedMessage message{std::string(xml::nameOf(text, *element)), {}};
    const auto add = [&](std::string_view name, std::string_view value) {
        if (name != xml::kOpcodeAttribute) message.fields.emplace_back(name, value);
    };
    const size_t failed = xml::walkAttributes(text, *element, add);
    if (failed != std::string_view::npos) return std::nullopt;
    return message;
}

SecondLook::SecondLook(Session& session) : peeker_(std::make_unique<Peeker>(session)) {}
SecondLook::~SecondLook() = default;

std::vector<PeekedMessage> SecondLook::messages(size_t limit) {
    std::vector<PeekedMessage> messages;
    if (!peeker_->reset()) return messages;
    for (const std::string& text : peeker_->messages()) {
        if (messages.size() == limit) break;
        if (auto message = peeker_->read(text)) messages.push_back(std::move(*message));
    }
    peeker_->stop();
    return messages;
}

void SecondLook::stop() { peeker_->stop(); }

}  // namespace host
