// Moments in PostgreSQL's binary form.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace host {

// Microseconds since 2000 of a date, timestamp or bigdatetime as the data type library writes it; none for
// years that PostgreSQL's timestamps do not reach.
std::optional<std::int64_t> postgresMoment(std::string_view text);

}  // namespace host
