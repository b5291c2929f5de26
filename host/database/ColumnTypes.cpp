#include "host/database/ColumnTypes.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "datatypes/Settings.h"
#include "datatypes/TypeCodes.h"
#include "host/values/Text.h"

namespace host {

namespace {

using namespace DataTypes;

constexpr int kMoneyDigits = 19;  // of a count of 64 bits
constexpr int kNoDigits = -1;

// A type of PostgreSQL without its numbers, and what it does to a value that is too fine for it.
using Names = std::array<const char*, 3>;

struct TypeRow {
    unsigned int kind;
    ValueForm form;
    const char* postgres;
    int fraction;         // digits of a second that a column needs; none: the type has no such number
    Names alsoPostgres;   // they hold every value too, as far as their numbers allow
    Names roundPostgres;  // they take the values, and lose a part
    const char* sqlite;
};

// Microseconds of an interval are a count, which no interval type writes as plainly; a date has a time of
// day.
constexpr TypeRow kTypes[] = {
    {kInt16,
     ValueForm::kInteger,
     "smallint",
     kNoDigits,
     {"integer", "bigint"},
     {"real", "double precision"},
     "INTEGER"},
    {kInteger,
     ValueForm::kInteger,
     "integer",
     kNoDigits,
     {"bigint"},
     {"real", "double precision"},
     "INTEGER"},
    {kLong, ValueForm::kInteger, "bigint", kNoDigits, {}, {"real", "double precision"}, "INTEGER"},
    {kFloat, ValueForm::kReal, "double precision", kNoDigits, {}, {"real", "numeric", "bigint"}, "REAL"},
    {kDate, ValueForm::kMoment, "timestamp", 0, {"timestamptz"}, {"date"}, "TEXT"},
    {kString, ValueForm::kText, "text", kNoDigits, {"varchar"}, {}, "TEXT"},
    {kMoney, ValueForm::kDecimal, "numeric", kNoDigits, {}, {"double precision", "real", "bigint"}, "TEXT"},
    {kTimestamp, ValueForm::kMoment, "timestamp", 3, {"timestamptz"}, {"date"}, "TEXT"},
    {kBoolean, ValueForm::kFlag, "boolean", kNoDigits, {}, {}, "INTEGER"},
    {kInterval, ValueForm::kMicroseconds, "bigint", kNoDigits, {"interval"}, {}, "INTEGER"},
    {kBigdatetime, ValueForm::kMoment, "timestamp", 6, {"timestamptz"}, {"date"}, "TEXT"},
    {kBinary, ValueForm::kBytes, "bytea", kNoDigits, {}, {}, "BLOB"},
    {kTime, ValueForm::kMoment, "time", 0, {}, {}, "TEXT"},
    {kDecimal, ValueForm::kDecimal, "numeric", kNoDigits, {}, {"double precision", "real", "bigint"}, "TEXT"},
};

const TypeRow& rowOf(std::uint32_t type) {
    const unsigned int kind = isNumberedMoney(kindOf(type)) ? kMoney : kindOf(type);
    const auto* row = std::find_if(std::begin(kTypes), std::end(kTypes),
                                   [kind](const TypeRow& one) { return one.kind == kind; });
    return row != std::end(kTypes) ? *row : rowOf(kString);
}

// Precision and scale of money and decimals.
std::array<int, 2> digitsOf(std::uint32_t type) {
    const unsigned int kind = kindOf(type);
    if (kind == kDecimal) return {precisionOf(type), scaleOf(type)};
    return {kMoneyDigits,
            isNumberedMoney(kind) ? numberedMoneyPlaces(kind) : static_cast<int>(g_legacyMoneyPrecision)};
}

bool isOneOf(const Names& names, const std::string& name) {
    return std::any_of(names.begin(), names.end(),
                       [&name](const char* one) { return one != nullptr && name == one; });
}

bool holdsDecimals(const DatabaseType& column, const std::array<int, 2>& digits) {
    if (column.numbers.empty()) return true;
    const int scale = column.numbers.size() > 1 ? column.numbers[1] : 0;
    return scale >= digits[1] && column.numbers[0] - scale >= digits[0] - digits[1];
}

Fit fitOfPostgres(const TypeRow& row, std::uint32_t type, const DatabaseType& column) {
    if (isOneOf(row.roundPostgres, column.name)) return Fit::kRounds;
    if (column.name != row.postgres && !isOneOf(row.alsoPostgres, column.name)) return Fit::kWrong;
    if (row.form == ValueForm::kDecimal)
        return holdsDecimals(column, digitsOf(type)) ? Fit::kExact : Fit::kRounds;
    constexpr int kFinest = 6;
    const int needed = column.name == "interval" ? kFinest : row.fraction;
    const bool isCoarse = needed != kNoDigits && !column.numbers.empty() && column.numbers[0] < needed;
    return isCoarse ? Fit::kRounds : Fit::kExact;
}

// What a column does to the values that it gets depends on words in its type's name; a strict table has just
// the plain ones.
enum class Affinity { kInteger, kText, kNone, kReal, kNumeric };

Affinity affinityOf(const std::string& declared) {
    const std::string name = lowerCase(declared);
    const auto has = [&name](const char* word) { return name.find(word) != std::string::npos; };
    if (has("int")) return Affinity::kInteger;
    if (has("char") || has("clob") || has("text")) return Affinity::kText;
    if (name.empty() || has("blob") || name == "any") return Affinity::kNone;
    if (has("real") || has("floa") || has("doub")) return Affinity::kReal;
    return Affinity::kNumeric;
}

Fit fitOfSqlite(const TypeRow& row, const DatabaseType& column) {
    const Affinity wanted = affinityOf(row.sqlite), found = affinityOf(column.name);
    if (found == wanted) return Fit::kExact;
    if (found == Affinity::kNone)
        return column.isStrict && lowerCase(column.name) == "blob" ? Fit::kWrong : Fit::kExact;
    if (found == Affinity::kNumeric && wanted == Affinity::kInteger) return Fit::kExact;
    const bool becomesNumber = found != Affinity::kText && wanted != Affinity::kNone;
    return becomesNumber ? Fit::kRounds : Fit::kWrong;
}

std::string withNumbers(const char* name, std::vector<int> numbers) {
    return textOf({name, std::move(numbers)});
}

}  // namespace

std::string textOf(const DatabaseType& type) {
    std::string numbers;
    for (const int number : type.numbers) addToList(numbers, std::to_string(number), ",");
    return numbers.empty() ? type.name : type.name + '(' + numbers + ')';
}

DatabaseType databaseType(const std::string& text) {
    const size_t open = text.find('('), close = text.find(')', open);
    if (close == std::string::npos) return {text, {}};
    DatabaseType type{text.substr(0, open) + text.substr(close + 1), {}};
    for (const char* at = text.data() + open + 1; at < text.data() + close;) {
        int number = 0;
        const auto [end, error] = std::from_chars(at, text.data() + close, number);
        if (error == std::errc()) type.numbers.push_back(number);
        at = std::max(end, at) + 1;
    }
    return type;
}

ValueForm valueForm(std::uint32_t serverType) { return rowOf(serverType).form; }

std::string createdType(DatabaseKind kind, std::uint32_t serverType) {
    const TypeRow& row = rowOf(serverType);
    if (kind == DatabaseKind::kSqlite) return row.sqlite;
    if (row.form == ValueForm::kDecimal) {
        const auto [precision, scale] = digitsOf(serverType);
        return withNumbers(row.postgres, {precision, scale});
    }
    return row.fraction == kNoDigits ? row.postgres : withNumbers(row.postgres, {row.fraction});
}

Fit fitOf(DatabaseKind kind, std::uint32_t serverType, const DatabaseType& column) {
    const TypeRow& row = rowOf(serverType);
    return kind == DatabaseKind::kSqlite ? fitOfSqlite(row, column) : fitOfPostgres(row, serverType, column);
}

}  // namespace host
