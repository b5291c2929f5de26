// The data formats: what holds of each, once. What the adapter does for one is a row of the table in
// JmsInAdapter.cpp.
#pragma once

#include <cstddef>
#include <string_view>

enum class DataFormat { kCsv = 0, kXml = 1, kFix = 2, kObjectArray = 3, kCustom = 4 };

namespace jmsin {

// Whether the stream's name and the opcode stand before a message's fields (jms/MessageLayout.h).
enum class Prefix { kNever, kAsConfigured, kAlways };

struct DataFormatInfo {
    DataFormat format;
    const char* name;     // in the parameter dataFormat
    bool isText;          // sent and taken as a text message
    bool isByNames;       // its connection row is "RowByNames"
    bool namesFields;     // a message names its fields, so that an absent one is not a blank one
    bool canDiscover;     // as the server is told
    bool datesAsSeconds;  // its dates are counts of seconds, else the format parameters are read
    Prefix prefix;
};

inline constexpr DataFormatInfo kDataFormats[] = {
    // format                 name          text   byNames names  discover seconds prefix
    {DataFormat::kCsv, "CSV", true, false, false, true, false, Prefix::kAsConfigured},
    {DataFormat::kXml, "XML", true, true, true, true, false, Prefix::kNever},
    {DataFormat::kFix, "FIX", true, false, true, false, false, Prefix::kNever},
    {DataFormat::kObjectArray, "OBJECTARRAY", false, false, false, true, true, Prefix::kAsConfigured},
    {DataFormat::kCustom, "CUSTOM", false, false, false, false, true, Prefix::kAlways},
};

template <typename Row, size_t kCount>
constexpr bool rowNumbersAreFormats(const Row (&rows)[kCount]) {
    for (size_t i = 0; i < kCount; ++i) {
        if (static_cast<size_t>(rows[i].format) != i) return false;
    }
    return true;
}
static_assert(rowNumbersAreFormats(kDataFormats), "the row number is the format");

constexpr const DataFormatInfo& infoOf(DataFormat format) {
    return kDataFormats[static_cast<size_t>(format)];
}

// Null: there is no format of that name.
constexpr const DataFormatInfo* findDataFormat(std::string_view name) {
    for (const DataFormatInfo& info : kDataFormats) {
        if (name == info.name) return &info;
    }
    return nullptr;
}

}  // namespace jmsin
