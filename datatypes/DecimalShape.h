// The digits that the values of a type take as decimals. For the library's own files.
#pragma once

namespace DataTypes::internal {

struct DecimalShape {
    int digits;  // all of them; 0 for kinds that are no whole or money numbers
    int scale;   // those after the point
};

// Of a decimal: its precision and scale.
DecimalShape decimalShapeOf(const unsigned int& code);

// Places after the point of a money kind, plain or numbered.
int moneyPlaces(unsigned int kind);

}  // namespace DataTypes::internal
