// The types that discovery proposes for texts.
#include "adapter/Adapter.h"
#include "datatypes/DataTypes.h"

uint32_t Adapter::testValue(const char* value, const char* dateFormat, const char* timestampFormat,
                            const char* timeFormat) {
    DataTypes::DataValue ignored;
    const char* error = nullptr;
    for (const unsigned int type : {DataTypes::kInteger, DataTypes::kLong, DataTypes::kFloat}) {
        if (DataTypes::convertFromString(type, value, ignored, error, nullptr, nullptr, nullptr, nullptr))
            return type;
    }
    for (const unsigned int type : {DataTypes::kDate, DataTypes::kTimestamp, DataTypes::kTime}) {
        if (DataTypes::convertFromString(type, value, ignored, error, dateFormat, timestampFormat, nullptr,
                                         timeFormat))
            return type;
    }
    return DataTypes::kString;
}
