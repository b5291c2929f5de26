// ReadValues TYPE TEXT...: reads each text as a value of the column type and writes the value as text.
#include <cstdio>

#include "datatypes/DataTypes.h"

int main(int argc, char** argv) {
    const unsigned int type = argc > 1 ? DataTypes::stringToType(argv[1]) : DataTypes::kUntyped;
    if (type == DataTypes::kUntyped || !DataTypes::numericType(type)) {
        std::fprintf(stderr, "ReadValues TYPE TEXT...: TYPE is a column type but string and binary.\n");
        return 2;
    }
    int status = 0;
    for (int i = 2; i < argc; ++i) {
        DataTypes::DataValue value;
        const char* error = "";
        // The null pointers stand for the default formats of dates and times.
        if (DataTypes::convertFromString(type, argv[i], value, error, nullptr, nullptr, nullptr, nullptr)) {
            char written[64] = "";
            DataTypes::convertToString(type, false, false, value, written, sizeof written);
            std::printf("%s\n", written);
        } else {
            std::fprintf(stderr, "\"%s\" is no %s: %s.\n", argv[i], argv[1], error);
            status = 1;
        }
    }
    return status;
}
