// Rows as text in a file or on standard output.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "host/process/Output.h"
#include "host/rows/RowFormat.h"
#include "host/rows/RowSink.h"

namespace host {

class TextSink : public RowSink {
public:
    // `atStart`: nothing stands in the file yet.
    using MakeFormat = std::function<std::unique_ptr<RowFormat>(bool atStart)>;

    // `file` as Output's. Throws Failure.
    TextSink(const std::string& file, const RowShape& shape, const MakeFormat& makeFormat);

    Kept keep(Batch& batch) override;
    void stop() override { output_.stop(); }

private:
    Output output_;
    std::unique_ptr<RowFormat> format_;
    std::string text_;
};

}  // namespace host
