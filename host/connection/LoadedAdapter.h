// The plug-in's adapter, driven as a server drives it.
#pragma once

#include "host/connection/Plugin.h"
#include "host/connection/Session.h"
#include "host/connection/StoppableReset.h"

namespace host {

// An adapter, created, wired and deleted. Plug-in and session stay with the caller and outlive it.
class LoadedAdapter {
public:
    LoadedAdapter(const Plugin& plugin, Session& session);
    ~LoadedAdapter();
    LoadedAdapter(const LoadedAdapter&) = delete;
    LoadedAdapter& operator=(const LoadedAdapter&) = delete;

    const Plugin& plugin() const { return plugin_; }
    void* handle() const { return handle_; }

    // Connects. From then on the adapter belongs to the calling thread, but for stop. Throws Failure.
    void reset();

    // Any thread, at any time: a reset that goes on, or comes later, fails.
    void stop();
    bool isStopped() const { return connecting_.isStopped(); }

private:
    const Plugin& plugin_;
    const Session& session_;
    Parameters connection_;
    void* handle_;
    StoppableReset connecting_;
};

}  // namespace host
