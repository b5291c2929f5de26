#include "host/database/PostgresParameters.h"

#include <array>
#include <bit>
#include <cstring>

namespace host {

namespace {

// Highest byte first.
template <typename Number>
std::array<char, sizeof(Number)> networkBytes(Number number) {
    std::array<char, sizeof(Number)> bytes;
    for (size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(number >> (8 * (bytes.size() - 1 - i)) & 0xFF);
    return bytes;
}

template <typename Number>
void append(std::string& bytes, Number number) {
    const auto all = networkBytes(number);
    bytes.append(all.data(), all.size());
}

void append(std::string& bytes, double value) { append(bytes, std::bit_cast<std::uint64_t>(value)); }

constexpr std::int32_t kNullLength = -1;
constexpr size_t kHeader = 20;  // dimensions, whether there are nulls, type, count, first index

}  // namespace

void PostgresParameters::clear() {
    bytes_.clear();
    begins_.clear();
    lengths_.clear();
}

void PostgresParameters::end(size_t begin) {
    begins_.push_back(begin);
    lengths_.push_back(static_cast<int>(bytes_.size() - begin));
}

PostgresParameters& PostgresParameters::addNull() {
    begins_.push_back(std::string::npos);
    lengths_.push_back(0);
    return *this;
}

PostgresParameters& PostgresParameters::add(bool value) {
    const size_t begin = bytes_.size();
    bytes_ += value ? '\1' : '\0';
    end(begin);
    return *this;
}

PostgresParameters& PostgresParameters::add(std::int64_t value) {
    const size_t begin = bytes_.size();
    append(bytes_, value);
    end(begin);
    return *this;
}

PostgresParameters& PostgresParameters::add(double value) {
    const size_t begin = bytes_.size();
    append(bytes_, value);
    end(begin);
    return *this;
}

PostgresParameters& PostgresParameters::add(std::string_view bytes) {
    const size_t begin = bytes_.size();
    bytes_ += bytes;
    end(begin);
    return *this;
}

const char* const* PostgresParameters::values() {
    values_.clear();
    for (const size_t begin : begins_) values_.push_back(begin == std::string::npos ? nullptr : bytes_.data() + begin);
    return values_.data();
}

const int* PostgresParameters::formats() {
    formats_.resize(lengths_.size(), 1);
    return formats_.data();
}

void PostgresArray::clear() {
    bytes_.assign(kHeader, '\0');
    count_ = 0;
    hasNulls_ = false;
}

void PostgresArray::addNull() {
    append(bytes_, kNullLength);
    hasNulls_ = true;
    ++count_;
}

void PostgresArray::add(bool value) { add(std::string_view(value ? "\1" : "\0", 1)); }

void PostgresArray::add(std::int64_t value) {
    append(bytes_, static_cast<std::int32_t>(sizeof value));
    append(bytes_, value);
    ++count_;
}

void PostgresArray::add(double value) {
    append(bytes_, static_cast<std::int32_t>(sizeof value));
    append(bytes_, value);
    ++count_;
}

void PostgresArray::add(std::string_view bytes) {
    append(bytes_, static_cast<std::int32_t>(bytes.size()));
    bytes_ += bytes;
    ++count_;
}

std::string_view PostgresArray::bytes() {
    std::string header;
    for (const std::int32_t field : {1, hasNulls_ ? 1 : 0, static_cast<std::int32_t>(type_), count_, 1}) append(header, field);
    bytes_.replace(0, kHeader, header);
    return bytes_;
}

PostgresArray textArray(const std::vector<std::string>& texts) {
    PostgresArray array(PostgresType::kText);
    for (const std::string& text : texts) array.add(std::string_view(text));
    return array;
}

}  // namespace host
