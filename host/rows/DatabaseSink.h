// Rows into a table of a database, every message exactly once.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/database/DatabaseSession.h"
#include "host/database/Ledger.h"
#include "host/database/Patience.h"
#include "host/database/Schema.h"
#include "host/rows/Batch.h"
#include "host/rows/RowSink.h"

namespace host {

// The rows and the IDs of their messages are committed together, so messages that come again are known; the
// rejects go into kel_rejected in the same transaction.
class DatabaseSink : public RowSink {
public:
    // The settings and the type, of the stream's rows, must outlive it.
    DatabaseSink(const SinkSettings& settings, const RowType& type);

    void open() override;
    Kept keep(Batch& batch) override;
    void settled(bool isConfirmed) override;
    void idle() override;
    void stop() override;

private:
    struct Work;
    enum class Standby { kWaits, kFails };

    void attach(Standby standby);
    void awaitSource(Standby standby);
    Work workOf(const Batch& batch) const;
    bool attempt(Work& work);
    void gather(Work& work, std::vector<Change>& changes, std::vector<size_t>& messages);
    void keepRejects(Work& work);
    void tell(const Work& work) const;
    [[noreturn]] void giveUpSource();

    const SinkSettings& settings_;
    const std::unique_ptr<DatabaseSession> session_;
    const Schema schema_;
    Ledger ledger_;
    StopRequest stop_;
    std::optional<TableShape> shape_;
    bool hasWritten_ = false;  // the batch kept last, which else was of repeats alone
    bool isAttached_ = false;  // connected, the lock and the epoch ours, as far as is known
};

// The sink for the settings' URL. Both must outlive it. Throws Failure for a URL of no database of this
// build.
std::unique_ptr<RowSink> makeDatabaseSink(const SinkSettings& settings, const RowType& type);

}  // namespace host
