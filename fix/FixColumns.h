// What NewFixUtils remembers from message to message about the stream's columns.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fix/NewFixUtils.h"

// A column of the stream as the dictionary sees it.
struct NewFixUtils::Column {
    std::string name;
    const std::string* tag = nullptr;  // in the dictionary; null: it has no such name
    int slot = 0;                      // of the tag in WantedFields
};

// Picks the values of the wanted tags out of one message after the other, with storage of its own.
class NewFixUtils::WantedFields {
public:
    // The slot that has the tag's values from the next read on; the same for the same tag.
    int want(const std::string& tag);

    // Whether a tag became wanted since the last read.
    bool isIncomplete() const { return incomplete_; }

    // Of several fields with one tag the last one counts.
    void read(const std::string& message, char separator);

    // The value in the message last read, if it has one; as text it is terminated, or null.
    std::optional<std::string_view> find(int slot) const { return values_[slot]; }
    const char* text(int slot) const;

    // While it lives, reading keeps the message; then a large one is forgotten.
    class Reading {
    public:
        explicit Reading(WantedFields& fields) : fields_(fields) {}
        ~Reading() { fields_.giveBack(); }
        Reading(const Reading&) = delete;
        Reading& operator=(const Reading&) = delete;

    private:
        WantedFields& fields_;
    };

private:
    int slotOf(std::string_view tag) const;
    void giveBack();

    std::string message_;
    std::vector<std::optional<std::string_view>> values_{1};  // by slot; 0 is no slot
    std::vector<int> slotByNumber_;                           // for tags that are plain decimal numbers
    std::map<std::string, int, std::less<>> slotByText_;      // for the others a dictionary may hold
    bool incomplete_ = false;
};
