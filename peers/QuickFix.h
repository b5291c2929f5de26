// QuickFIX, the other end of the interoperation tests and the measure of the benchmarks.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace quickfix {

using Fields = std::map<int, std::string>;

// The fields of a message whose body length, checksum and order of header, body and trailer are right;
// throws a std::exception otherwise.
Fields read(const std::string& message);

std::string compose(const std::string& version, const std::string& type, const Fields& fields);

// From texts as a row hands them out.
std::string compose(const std::string& version, const std::string& type,
                    const std::vector<std::pair<int, const char*>>& fields);

// Into a new message, which is then thrown away.
void parse(const std::string& message);

}  // namespace quickfix
