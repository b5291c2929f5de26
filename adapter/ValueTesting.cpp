// The types that discovery proposes for texts.
#include "adapter/Adapter.h"
#include "datatypes/DataTypes.h"

uint32_t Adapter::testValue(const char* value, const char* dateFormat, const char* timestampFormat,
                            const char* timeFormat) {
    return DataTypes::inferType(value, dateFormat, timestampFormat, timeFormat);
}
