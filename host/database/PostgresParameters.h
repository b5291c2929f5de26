// Values in the binary form in which PostgreSQL takes them, so that none is quoted, cut or misread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// The types of parameters that are sent, by their numbers in every PostgreSQL.
enum class PostgresType : std::uint32_t {
    kBoolean = 16,
    kBytes = 17,
    kLong = 20,
    kText = 25,
    kFloat = 701,
    kTimestamp = 1114,
    kTimestamptz = 1184
};

// The parameters of one statement, in their order.
class PostgresParameters {
public:
    void clear();
    PostgresParameters& addNull();
    PostgresParameters& add(bool value);
    PostgresParameters& add(std::int64_t value);
    PostgresParameters& add(double value);
    PostgresParameters& add(std::string_view bytes);  // text in UTF-8, bytes, or an array's

    int count() const { return static_cast<int>(lengths_.size()); }
    // Both valid until the next change. Null for null.
    const char* const* values();
    const int* lengths() const { return lengths_.data(); }
    const int* formats();  // all binary

private:
    void end(size_t begin);

    std::string bytes_;
    std::vector<size_t> begins_;
    std::vector<int> lengths_;
    std::vector<const char*> values_;
    std::vector<int> formats_;
};

// An array with one dimension.
class PostgresArray {
public:
    explicit PostgresArray(PostgresType type) : type_(type) { clear(); }

    void clear();
    void addNull();
    void add(bool value);
    void add(std::int64_t value);
    void add(double value);
    void add(std::string_view bytes);

    // As a parameter; valid until the next change.
    std::string_view bytes();

private:
    const PostgresType type_;
    std::int32_t count_ = 0;
    bool hasNulls_ = false;
    std::string bytes_;
};

PostgresArray textArray(const std::vector<std::string>& texts);

}  // namespace host
