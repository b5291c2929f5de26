// Message text straight to row. A field map would cost more than all the rest: here the walk over the text
// stores the wanted values alone, and storage is kept from message to message.
#include "fix/NewFixUtils.h"

#include "adapter/Adapter.h"
#include "fix/FieldWalk.h"
#include "fix/FixColumns.h"
#include "util/KeptText.h"

namespace {

constexpr unsigned kMaxNumber = 65535;  // bounds the table by number

// The number that a tag is written as, without leading zeros; 0 for any other text.
unsigned numberOf(std::string_view tag) {
    if (tag.empty() || tag.size() > 5 || tag.front() == '0') return 0;
    unsigned number = 0;
    for (const char c : tag) {
        const auto digit = static_cast<unsigned>(c - '0');
        if (digit > 9) return 0;
        number = number * 10 + digit;
    }
    return number <= kMaxNumber ? number : 0;
}

}  // namespace

int NewFixUtils::WantedFields::slotOf(std::string_view tag) const {
    if (const unsigned number = numberOf(tag))
        return number < slotByNumber_.size() ? slotByNumber_[number] : 0;
    if (slotByText_.empty()) return 0;
    const auto entry = slotByText_.find(tag);
    return entry != slotByText_.end() ? entry->second : 0;
}

int NewFixUtils::WantedFields::want(const std::string& tag) {
    if (const int known = slotOf(tag)) return known;
    const int slot = static_cast<int>(values_.size());
    values_.emplace_back();
    incomplete_ = true;
    if (const unsigned number = numberOf(tag)) {
        if (number >= slotByNumber_.size()) slotByNumber_.resize(number + 1);
        slotByNumber_[number] = slot;
    } else {
        slotByText_[tag] = slot;
    }
    return slot;
}

void NewFixUtils::WantedFields::giveBack() {
    if (!util::isLarge(message_)) return;
    for (auto& value : values_) value.reset();
    util::giveBackIfLarge(message_);
}

void NewFixUtils::WantedFields::read(const std::string& message, char separator) {
    for (auto& value : values_) value.reset();
    message_ = message;
    char* const text = message_.data();
    fix::forEachField(text, text + message_.size(), separator, [this, text](const fix::FieldPlace& field) {
        const int slot = slotOf({field.tag, field.tagLength()});
        if (slot == 0) return;
        values_[slot].emplace(field.value(), field.valueLength());
        text[field.end - text] = '\0';  // over the separator, which the walk has passed, or the terminator
    });
    incomplete_ = false;
}

const char* NewFixUtils::WantedFields::text(int slot) const {
    const auto value = find(slot);
    return value ? value->data() : nullptr;
}

NewFixUtils::Outcome NewFixUtils::messageToRow(const std::string& message, const std::string& messageType,
                                               void* row) {
    const WantedFields::Reading reading(*wanted_);
    trace("NewFixUtils::parseFixMessage()");
    const int version = wanted_->want(beginStringTag);
    const int type = wanted_->want(msgTypeTag);
    wanted_->read(message, fieldSeparator);

    trace("NewFixUtils::validateFixMessage()");
    if (!isExpected(wanted_->find(version), wanted_->find(type), messageType)) return Outcome::kSkipped;

    trace("NewFixUtils::fixMsgToRowBuf()");
    if (adapter_ == nullptr) return Outcome::kBad;
    const int count = adapter_->getColumnCount();
    for (int i = 0; i < count; ++i) {
        const Column& wanted = column(i);
        if (wanted.tag == nullptr) {
            refuseColumn(wanted);
            return Outcome::kBad;
        }
        if (wanted_->isIncomplete()) wanted_->read(message, fieldSeparator);
        adapter_->setFieldAsStringWithIndex(row, i, wanted_->text(wanted.slot));
    }
    adapter_->setOp(row, 'i');
    return Outcome::kRow;
}
