#include "host/connection/BridgeClient.h"
#include "host/configuration/Settings.h"

namespace host {

BridgeClient::BridgeClient(Context& context, RowType& rowType, Parameters& parameters, Use use)
    : parameters_(parameters), use_(use) {
    connectionErrors = createConnectionErrors();
    outputAdapter = use == Use::kSend;
    discoveryMode = use == Use::kBrowse;
    setCallbackReference(&context);
    setConnectionRowType(&rowType);
    setConnectionParams(&parameters);
}

BridgeClient::~BridgeClient() { deleteConnectionErrors(connectionErrors); }

std::string BridgeClient::parameter(const char* name) const {
    const auto found = parameters_.find(name);
    return found != parameters_.end() ? found->second : std::string();
}

bool BridgeClient::reset() {
    return connecting_.run([this] { return connect(); });
}

bool BridgeClient::connect() {
    resetCommon();
    jms_.reset(this);
    // The client ID of a durable subscription is its receiver's: a second connection must not bring it.
    constexpr bool kDurable = false;
    constexpr char kNoClientId[] = "";
    constexpr char kNoSubscription[] = "";
    const bool isForInput = use_ == Use::kBrowse;
    const bool bindsSchema = use_ == Use::kSend;
    return jms_.init(parameter(params::kConnectionFactory), parameter(params::kDestinationType),
                     parameter(params::kDestinationName), kDurable, isForInput, bindsSchema, columnMap_,
                     parameter(params::kJndiContextFactory), parameter(params::kJndiUrl), kNoClientId,
                     kNoSubscription);
}

void BridgeClient::stop() {
    connecting_.stop([this] { jms_.disconnect(); });
}

}  // namespace host
