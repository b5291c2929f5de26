#include "host/DiscoverPeek.h"

#include <map>

#include "adapter/Adapter.h"
#include "jms/JmsUtils.h"
#include "jmsin/XmlPatterns.h"

namespace host {

namespace {

constexpr char kOpcodeAttribute[] = "KEL_OPS";

// As much of an adapter as the bridge needs to browse.
class Peeker : public Adapter {
public:
    explicit Peeker(Session& session) {
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

    // An adapter that only looks.
    void* getNext() override { return nullptr; }
    void putNext(void* /*row*/) override {}
    bool canDiscover() override { return false; }

private:
    std::string parameter(const char* name) {
        std::string value;
        getParam(name, value);
        return value;
    }

    JmsUtils jms_;
    std::map<std::string, std::string> columnMap_;  // no names are mapped
};

}  // namespace

std::optional<XmlSample> readXmlSample(std::string_view text) {
    static const xml::Pattern element(xml::kElement, xml::scanElement);
    static const xml::Pattern attribute(xml::kAttribute, xml::scanAttribute);
    const auto found = element.match(text);
    if (!found) return std::nullopt;
    const auto piece = [](std::string_view from, size_t begin, size_t end) {
        return std::string(from.substr(begin, end - begin));
    };
    XmlSample sample{piece(text, found->nameBegin, found->nameEnd), {}};
    for (size_t at = found->valueBegin; at < found->valueEnd;) {
        const std::string_view rest = text.substr(at);
        const auto next = attribute.match(rest);
        if (!next) return std::nullopt;
        const std::string name = piece(rest, next->nameBegin, next->nameEnd);
        if (name != kOpcodeAttribute) sample.attributes.push_back(name);
        at += next->end;
    }
    return sample;
}

std::vector<XmlSample> peekXml(Session& session) {
    std::vector<XmlSample> samples;
    Peeker peeker(session);
    if (peeker.reset()) {
        for (const std::string& text : peeker.messages()) {
            if (auto sample = readXmlSample(text)) samples.push_back(std::move(*sample));
        }
        peeker.stop();
    }
    return samples;
}

}  // namespace host
