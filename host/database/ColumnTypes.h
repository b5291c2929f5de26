// How values of the server's types stand in a database's columns.
#pragma once

#include <cstdint>
#include <string>

#include "host/database/DatabaseKinds.h"
#include "host/database/TableShape.h"

namespace host {

// What a value is to a database.
enum class ValueForm {
    kFlag,
    kInteger,
    kMicroseconds,  // an integer that comes as text
    kReal,
    kText,
    kDecimal,  // these two come as text, which the database reads or keeps
    kMoment,
    kBytes,  // come as hexadecimal digits
};

ValueForm valueForm(std::uint32_t serverType);

// Whether every value of a server's type comes back from a column as it went in.
enum class Fit { kExact, kRounds, kWrong };

// The type of the column that is created for the server's type: numeric(10,2).
std::string createdType(DatabaseKind kind, std::uint32_t serverType);

// `column` as the session reports it.
Fit fitOf(DatabaseKind kind, std::uint32_t serverType, const DatabaseType& column);

}  // namespace host
