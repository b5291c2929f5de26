// The connector's side door: what it holds of the messages taken since the last settling, and the settling.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/rows/Batch.h"
#include "jms/ConnectorMethods.h"

namespace host {

namespace delivery {
inline constexpr char kClass[] = "com/morvex/kel/connectors/Delivery";
// All are static.
inline constexpr contract::Method kMethods[] = {
    {"taken", "()[Ljava/lang/String;"},
    {"header", "(Ljava/lang/String;)[Ljava/lang/String;"},
    {"property", "(Ljava/lang/String;)[Ljava/lang/String;"},
    {"refusal", "(I)Ljava/lang/String;"},
    {"firstElement", "(I)Ljava/lang/String;"},
    {"body", "(I)[B"},
    {"describe", "(I)[Ljava/lang/String;"},
    {"isLost", "()Z"},
    {"settle", "()Z"},
    {"forget", "()Z"},
    {"count", "()I"},
};
inline constexpr const contract::Method& kTaken = kMethods[0];
inline constexpr const contract::Method& kHeader = kMethods[1];
inline constexpr const contract::Method& kProperty = kMethods[2];
inline constexpr const contract::Method& kRefusal = kMethods[3];
inline constexpr const contract::Method& kFirstElement = kMethods[4];
inline constexpr const contract::Method& kBody = kMethods[5];
inline constexpr const contract::Method& kDescribe = kMethods[6];
inline constexpr const contract::Method& kIsLost = kMethods[7];
inline constexpr const contract::Method& kSettle = kMethods[8];
inline constexpr const contract::Method& kForget = kMethods[9];
inline constexpr const contract::Method& kCount = kMethods[10];
}  // namespace delivery

// Everything runs on the thread that receives, and is about the connector that it receives from. Throws
// Failure when the connector cannot answer; nothing is settled then.
class Delivery : public Envelopes {
public:
    // One a message taken; none where the message has no such header or property.
    using Values = std::vector<std::optional<std::string>>;

    size_t count();  // of the messages

    std::vector<std::string> ids() override;
    std::vector<std::string> replayOf() override;
    MessageCopy copyOf(size_t message) override;

    // In modified UTF-8, as an adapter's texts are.
    Values header(const std::string& name);
    Values property(const std::string& name);  // empty: no message has it

    // False for a receive that failed before there was a message.
    bool isMessage(size_t message);

    // Why the connector refused the message; none: it handed it on.
    std::optional<std::string> refusal(size_t message);

    // The first of the texts that were handed on for the message; none: it was one text.
    std::optional<std::string> firstElement(size_t message);

    // Whether the connection over which they came has ended: all of them come again.
    bool isLost();

    // All that were taken are safe. False: they may come again, as the connector has said.
    bool settle();
    // They come again.
    void forget();
};

}  // namespace host
