// What stands around a message and can fill a column: its headers and its properties.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace host {

// What is wrong with filling a column of that type from there, to follow the column's name; "" for nothing.
std::string faultOfSource(std::string_view from, std::uint32_t type);

}  // namespace host
