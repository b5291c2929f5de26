#include "host/rows/TextSink.h"

#include "host/process/Console.h"
#include "host/rows/Batch.h"

namespace host {

TextSink::TextSink(const std::string& file, const RowShape& shape, const MakeFormat& makeFormat)
    : output_(file, &shape), format_(makeFormat(output_.isAtStart())) {}

Kept TextSink::keep(Batch& batch) {
    Kept kept;
    text_.clear();
    for (const BatchMessage& message : batch.messages) {
        if (message.reject) ++kept.rejected;
        if (!message.row) continue;
        format_->append(*message.row, text_);
        ++kept.rows;
    }
    if (text_.empty()) return kept;
    if (output_.isTerminal()) hideStatus();
    output_.write(text_);
    return kept;
}

}  // namespace host
