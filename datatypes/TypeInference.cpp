#include "datatypes/TypeInference.h"

#include "datatypes/DataValue.h"
#include "datatypes/TypeWidening.h"
#include "datatypes/ValueParsing.h"

namespace DataTypes {

bool readsAs(unsigned int type, const char* text, const char* dateFormat, const char* timestampFormat,
             const char* timeFormat) {
    DataValue ignored;
    const char* error = nullptr;
    const bool isTemporal = type == kDate || type == kTimestamp || type == kTime;
    if (!isTemporal) return convertFromString(type, text, ignored, error, nullptr, nullptr, nullptr, nullptr);
    return convertFromString(type, text, ignored, error, dateFormat, timestampFormat, nullptr, timeFormat);
}

unsigned int inferType(const char* text, const char* dateFormat, const char* timestampFormat,
                       const char* timeFormat) {
    for (const unsigned int type : kInferredTypes) {
        if (readsAs(type, text, dateFormat, timestampFormat, timeFormat)) return type;
    }
    return kString;
}

void widenColumn(unsigned int& column, unsigned int value) {
    if (column != kNotInferred) maximizeAnyType(value, column);
    column = value;
}

}  // namespace DataTypes
