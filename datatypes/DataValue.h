// The typed value holder of parsing and formatting.
#pragma once

#include <cstddef>
#include <cstdint>

#include "datatypes/FixedDecimal.h"

namespace DataTypes {

// One value of any kind: a union of 24 bytes, then the null flag. A packed value has the bytes of its member
// here.
//
// A string or binary value that parsing made is a block of malloc's, which the caller frees; the next
// conversion of the same kind into the holder frees it too. So a holder that is not null must be reused for
// its own kind only.
struct DataValue {
    struct Binary {
        unsigned char* bytes;
        uint32_t length;
    };

    union {
        int16_t int16Value;    // int16
        int32_t integerValue;  // integer
        int64_t longValue;     // long, interval, money in counts of its smallest fraction; date and time in
                               // seconds, timestamp in milliseconds, bigdatetime in microseconds since 1970
        double floatValue;     // float
        uint8_t booleanValue;  // boolean, 0 or 1
        char* stringValue;     // string, NUL-terminated
        Binary binaryValue;    // binary
        FixedDecimalValue decimalValue{};  // decimal; the widest, so that a new holder is all zero
    };
    bool isNull = true;
};

static_assert(sizeof(FixedDecimalValue) == 24 && offsetof(DataValue, isNull) == 24);

}  // namespace DataTypes
