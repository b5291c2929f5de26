// The messages of which a stream's runs could make no rows, wherever they are kept, and their way into rows
// after all.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/database/DatabaseSession.h"
#include "host/rows/RowSink.h"

namespace host {

// Belongs to one thread; stop may come from any other. Operations throw Failure.
class KeptRejects {
public:
    virtual ~KeptRejects() = default;

    // In the order in which they were kept, without bodies; those that were sent again only if `all`.
    virtual std::vector<KeptReject> list(bool all) = 0;

    virtual std::optional<KeptReject> load(std::int64_t id) = 0;  // none: there is no such one

    // What a copy says of which kept message it is.
    virtual std::string markOf(std::int64_t id) const = 0;

    // A sink for batches of such copies: makes rows of those that were not before. Belongs to this object.
    virtual RowSink& replaySink() = 0;

    // The copy was sent to the stream's own destination.
    virtual void wasSent(std::int64_t id) = 0;

    virtual void stop() = 0;
};

// Those in the settings' database. Both must outlive the result.
std::unique_ptr<KeptRejects> databaseRejects(const SinkSettings& settings, const RowType& type);

// Those in the file of a run with rows as text; `rows` takes the rows, of which a crash may repeat some, and
// is null where none will come. `replays`: not only to be looked at, which one process at a time may do.
std::unique_ptr<KeptRejects> fileRejects(const std::string& file, std::unique_ptr<RowSink> rows,
                                         bool replays);

}  // namespace host
