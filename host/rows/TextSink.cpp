#include "host/rows/TextSink.h"

#include "host/process/Console.h"

namespace host {

TextSink::TextSink(const std::string& file, const RowShape& shape, const MakeFormat& makeFormat)
    : output_(file, &shape), format_(makeFormat(output_.isAtStart())) {}

void TextSink::take(const ServerRow& row) {
    text_.clear();
    format_->append(row, text_);
    if (output_.isTerminal()) hideStatus();
    output_.write(text_);
}

}  // namespace host
