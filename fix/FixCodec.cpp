// FIX messages to field maps, field maps to rows, rows to messages.
#include "fix/NewFixUtils.h"

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <optional>
#include <string_view>

#include "adapter/Adapter.h"
#include "fix/FieldWalk.h"
#include "fix/FixColumns.h"
#include "fix/LogLevels.h"
#include "fix/MessageWriter.h"
#include "util/StringUtils.h"

using MORVEX::Kel::strprintf;

namespace {

// Fields on their way into a map. Handing them over in the order of their tags spares the map nearly all of
// its searching.
class FieldBatch {
public:
    explicit FieldBatch(NewFixUtils::FieldMap& fields) : fields_(fields) {}

    void add(const fix::FieldPlace& field) {
        places_[count_] = field;
        order_[count_] = orderKey(field) | count_;
        if (++count_ == kCapacity) flush();
    }

    void flush() {
        std::sort(order_.begin(), order_.begin() + count_);
        auto next = fields_.begin();
        for (size_t i = 0; i < count_; ++i) {
            const fix::FieldPlace& field = places_[order_[i] & kIndexMask];
            const std::string_view tag(field.tag, field.tagLength());
            const std::string_view value(field.value(), field.valueLength());
            if (next != fields_.end() && next->first == tag) {
                next->second = value;
            } else {
                next = fields_.insert_or_assign(next, std::string(tag), value);
            }
            ++next;
        }
        count_ = 0;
    }

private:
    static constexpr size_t kCapacity = 128;
    static constexpr uint64_t kIndexMask = 0xFFFF;

    // The tag's first six characters above the field's index: fields of one tag stay in message order, so
    // that the last one wins. Tags that differ later only lose the speed.
    static uint64_t orderKey(const fix::FieldPlace& field) {
        uint64_t key = 0;
        int shift = 56;
        for (const char* c = field.tag; c < field.equals && shift > 8; ++c, shift -= 8)
            key |= static_cast<uint64_t>(static_cast<unsigned char>(*c)) << shift;
        return key;
    }

    NewFixUtils::FieldMap& fields_;
    size_t count_ = 0;
    std::array<fix::FieldPlace, kCapacity> places_;
    std::array<uint64_t, kCapacity> order_;
};

int checkSumOf(std::string_view text) {
    // Each byte with its top bit turned is 128 above its value as a signed character, and so can be summed
    // eight at a time by an instruction for unsigned ones.
    constexpr uint64_t kOffset = 128;
    constexpr size_t kBlock = sizeof(__m128i);
    const char* at = text.data();
    const char* const end = at + text.size();
    const __m128i turn = _mm_set1_epi8(static_cast<char>(kOffset));
    const __m128i zero = _mm_setzero_si128();
    __m128i sums = zero;
    for (; static_cast<size_t>(end - at) >= kBlock; at += kBlock) {
        const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
        sums = _mm_add_epi64(sums, _mm_sad_epu8(_mm_xor_si128(block, turn), zero));
    }
    uint64_t sum = static_cast<uint64_t>(_mm_cvtsi128_si64(sums)) +
                   static_cast<uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(sums, sums)));
    for (; at < end; ++at) sum += static_cast<unsigned char>(*at) ^ kOffset;
    sum -= kOffset * text.size();
    return static_cast<int32_t>(static_cast<uint32_t>(sum)) % 256;
}

// A number's text. One shorter than `width` gets one zero in front, and never more than one.
class NumberText {
public:
    explicit NumberText(int64_t number, size_t width = 0) {
        text_[0] = '0';
        char* const first = text_.data() + 1;
        end_ = std::to_chars(first, text_.data() + text_.size(), number).ptr;
        begin_ = static_cast<size_t>(end_ - first) < width ? text_.data() : first;
    }
    NumberText(const NumberText&) = delete;
    NumberText& operator=(const NumberText&) = delete;
    std::string_view view() const { return {begin_, static_cast<size_t>(end_ - begin_)}; }

private:
    std::array<char, 24> text_;
    const char* begin_;
    const char* end_;
};

}  // namespace

void NewFixUtils::splitString(const std::string& text, const std::string& delimiter,
                              std::vector<std::string>& parts) const {
    const bool findable = !delimiter.empty() || text.empty();
    size_t position = 0;
    for (;;) {
        const size_t found = findable ? text.find(delimiter, position) : std::string::npos;
        parts.push_back(text.substr(position, found - position));
        // From npos this wraps around to the delimiter's length minus 1: the second part of an empty text.
        position = found + delimiter.size();
        if (position == text.size()) {
            parts.emplace_back();
            return;
        }
        if (found == std::string::npos) return;
    }
}

bool NewFixUtils::parseFixMessage(const std::string& message, FieldMap& fields) const {
    trace("NewFixUtils::parseFixMessage()");
    FieldBatch batch(fields);
    fix::forEachField(message.data(), message.data() + message.size(), fieldSeparator,
                      [&batch](const fix::FieldPlace& field) { batch.add(field); });
    batch.flush();
    return true;
}

bool NewFixUtils::validateFixMessage(const FieldMap& fields, const std::string& messageType) const {
    trace("NewFixUtils::validateFixMessage()");
    const auto valueOf = [&fields](const std::string& tag) -> std::optional<std::string_view> {
        const auto field = fields.find(tag);
        if (field == fields.end()) return std::nullopt;
        return field->second;
    };
    return isExpected(valueOf(beginStringTag), valueOf(msgTypeTag), messageType);
}

bool NewFixUtils::isExpected(std::optional<std::string_view> beginString,
                             std::optional<std::string_view> type, const std::string& expectedType) const {
    constexpr size_t kProtocolLength = 4;  // "FIX.", or whatever stands there
    if (!beginString) {
        log(fix::kError, "Error: FIX message contains no FIX version tag");
        return false;
    }
    const std::string version = std::string(*beginString).substr(kProtocolLength);
    if (version != fixVersion_) {
        log(fix::kError, strprintf("Error: FIX message has wrong FIX version number %s", version.c_str()));
        return false;
    }
    if (!type) {
        log(fix::kError, "Error: FIX message contains no message type tag");
        return false;
    }
    return *type == expectedType;
}

const NewFixUtils::Column& NewFixUtils::column(int index) {
    const char* name = adapter_->getColumnName(index);
    if (name == nullptr) name = "";
    const auto at = static_cast<size_t>(index);
    if (at >= columns_.size()) columns_.resize(at + 1);
    Column& known = columns_[at];
    // A look-up costs ten comparisons of strings, this one tells whether the last answer still holds.
    if (std::strcmp(known.name.c_str(), name) == 0) return known;
    const auto entry = tagByName_.find(name);
    if (entry == tagByName_.end()) {
        known = {name, nullptr, 0};
    } else {
        known = {name, &entry->second, wanted_->want(entry->second)};
    }
    return known;
}

bool NewFixUtils::refuseColumn(const Column& unknown) const {
    log(fix::kError, strprintf("Column name %s not found in FIX dictionary", unknown.name.c_str()));
    return false;
}

bool NewFixUtils::fixMsgToRowBuf(const FieldMap& fields, void* row) {
    trace("NewFixUtils::fixMsgToRowBuf()");
    if (adapter_ == nullptr) return false;
    const int count = adapter_->getColumnCount();
    for (int i = 0; i < count; ++i) {
        const Column& wanted = column(i);
        if (wanted.tag == nullptr) return refuseColumn(wanted);
        const auto field = fields.find(*wanted.tag);
        adapter_->setFieldAsStringWithIndex(row, i, field != fields.end() ? field->second.c_str() : nullptr);
    }
    adapter_->setOp(row, 'i');
    return true;
}

bool NewFixUtils::rowBufToFixMsg(void* row, std::string& message, const std::string& messageType) {
    trace("NewFixUtils::rowBufToFixMsg()");
    using fix::MessageWriter;
    constexpr char kAnyLength[] = "18446744073709551615";
    const std::string version = "FIX." + fixVersion_;
    const size_t front =
        MessageWriter::lengthOf(beginStringTag, version) + MessageWriter::lengthOf(bodyLengthTag, kAnyLength);
    MessageWriter writer(message, front, fieldSeparator);
    writer.append(msgTypeTag, messageType);
    const bool complete = appendColumns(row, writer);
    if (complete) writer.prepend(bodyLengthTag, NumberText(std::ssize(writer.message())).view());
    writer.prepend(beginStringTag, version);
    if (!complete) return false;

    // A one-digit sum goes out with two digits, as receivers of this program know it.
    writer.append(checkSumTag, NumberText(checkSumOf(writer.message()), 3).view());
    return true;
}

bool NewFixUtils::appendColumns(void* row, fix::MessageWriter& writer) {
    if (adapter_ == nullptr) return false;
    const int count = adapter_->getColumnCount();
    for (int i = 0; i < count; ++i) {
        const Column& wanted = column(i);
        if (wanted.tag == nullptr) return refuseColumn(wanted);
        const char* value = nullptr;
        if (!adapter_->getFieldAsStringWithIndex(row, i, &value)) {
            log(fix::kError, strprintf("Cannot get value of column at %d", i));
            return false;
        }
        writer.append(*wanted.tag, value != nullptr ? value : "");
    }
    return true;
}

int NewFixUtils::calculateCheckSum(const std::string& text) const { return checkSumOf(text); }
