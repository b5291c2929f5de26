#include "host/connection/Settlement.h"

#include "host/connection/Delivery.h"

namespace host {

namespace {

class ByHost : public Settlement {
public:
    explicit ByHost(size_t most) : most_(most) {}

    size_t most() const override { return most_; }
    Delivery* delivery() override { return &delivery_; }
    bool isLost() override { return delivery_.isLost(); }
    bool settle() override { return delivery_.settle(); }
    void forget() override { delivery_.forget(); }

private:
    const size_t most_;
    Delivery delivery_;
};

class ByAdapter : public Settlement {
public:
    explicit ByAdapter(LoadedAdapter& adapter) : adapter_(adapter) {}

    size_t most() const override { return 1; }
    Delivery* delivery() override { return nullptr; }
    bool isLost() override { return false; }
    bool settle() override {
        adapter_.plugin().commitTransaction(adapter_.handle());
        return true;
    }
    void forget() override {}

private:
    LoadedAdapter& adapter_;
};

}  // namespace

std::unique_ptr<Settlement> settledByHost(size_t most) { return std::make_unique<ByHost>(most); }

std::unique_ptr<Settlement> settledByAdapter(LoadedAdapter& adapter) {
    return std::make_unique<ByAdapter>(adapter);
}

}  // namespace host
