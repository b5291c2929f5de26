// Where the rows of a run are handed over.
#pragma once

namespace host {

struct ServerRow;

// Belongs to one thread; stop may come from any other.
class RowSink {
public:
    virtual ~RowSink() = default;

    // Takes the row over; nothing of it is referred to when this returns. Throws Failure.
    virtual void take(const ServerRow& row) = 0;

    // When this returns, every row taken is safe and its message may be acknowledged. Throws Failure.
    virtual void keep() = 0;

    // From now on nothing waits for long.
    virtual void stop() = 0;
};

}  // namespace host
