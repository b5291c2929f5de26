#include "host/connection/LoadedAdapter.h"

#include "host/configuration/InForce.h"
#include "host/process/Failure.h"
#include "host/process/Signals.h"

namespace host {

LoadedAdapter::LoadedAdapter(const Plugin& plugin, Session& session)
    : plugin_(plugin),
      session_(session),
      connection_(connectionInForce(session.settings)),
      handle_(plugin.createAdapter()) {
    plugin.setCallBackReference(handle_, &session.context);
    plugin.setConnectionRowType(handle_, &session.rowType);
    plugin.setConnectionParams(handle_, &connection_);
}

LoadedAdapter::~LoadedAdapter() { plugin_.deleteAdapter(handle_); }

void LoadedAdapter::reset() {
    if (connecting_.run([this] { return plugin_.reset(handle_); })) return;
    if (isStopped()) throw Failure(kStoppedEarly);
    throw Failure(std::string("The adapter ") +
                  (session_.errors > 0 ? "refuses to start" : "cannot connect") +
                  "; the reason stands above.");
}

void LoadedAdapter::stop() {
    connecting_.stop([this] { plugin_.stop(handle_); });
}

}  // namespace host
