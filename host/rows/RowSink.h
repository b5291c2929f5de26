// Where the rows of a run are handed over.
#pragma once

#include <cstdint>
#include <stdexcept>

namespace host {

struct Batch;

// What became of a batch's messages.
struct Kept {
    std::int64_t rows = 0;
    std::int64_t rejected = 0;  // those that came without a row, and those that the sink refused
    std::int64_t repeated = 0;  // left out, because they had been kept before
    double waited = 0;          // seconds for a database that was away
};

// Somebody else writes for this sink's source now: nothing of the batch was kept, none of it may be settled,
// and `open` waits for the next turn.
class TakenOver : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Belongs to one thread; stop may come from any other. Every operation throws Failure.
class RowSink {
public:
    virtual ~RowSink() = default;

    // Comes before a connection to the provider is made, and again after TakenOver: waits until rows can be
    // kept.
    virtual void open() {}

    // When this returns, every message of the batch is safe, as a row or as a reject, and may be settled. The
    // batch's rejects are told, and those that the sink adds stand in it. Throws TakenOver.
    virtual Kept keep(Batch& batch) = 0;

    // Whether the provider has confirmed the last batch; if not, its messages may come again.
    virtual void settled(bool /*isConfirmed*/) {}

    // Comes every now and then while there is nothing to keep, and takes no longer than one try to reach what
    // rows are kept in. Throws TakenOver.
    virtual void idle() {}

    // From now on nothing waits for long.
    virtual void stop() = 0;
};

}  // namespace host
