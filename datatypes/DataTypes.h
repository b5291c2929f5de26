// The server's data type library: type codes and their names, conversion of field texts to values and back,
// dates, fixed decimals.
#pragma once

#include "datatypes/DataValue.h"
#include "datatypes/DateParsing.h"
#include "datatypes/FixedDecimal.h"
#include "datatypes/FourDigits.h"
#include "datatypes/LongDivision.h"
#include "datatypes/Settings.h"
#include "datatypes/TimeUnits.h"
#include "datatypes/TypeCodes.h"
#include "datatypes/TypeInference.h"
#include "datatypes/TypeWidening.h"
#include "datatypes/ValueFormatting.h"
#include "datatypes/ValueParsing.h"
