// An adapter that does nothing, for what needs one to log through.
#pragma once

#include "adapter/Adapter.h"

class IdleAdapter : public Adapter {
    void* getNext() override { return nullptr; }
    void putNext(void*) override {}
    void stop() override {}
    bool reset() override { return true; }
    bool canDiscover() override { return false; }
};
