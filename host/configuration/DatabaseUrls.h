// The databases that a sink's URL can name, and how they take names.
#pragma once

#include <cstddef>
#include <string_view>

namespace host {

inline constexpr char kSqliteScheme[] = "sqlite:";

struct DatabaseKind {
    const char* name;
    std::string_view scheme;  // what its URLs begin with
    const char* form;         // of a whole URL
    bool foldsCase;           // two names that differ in case alone are one
    bool hasSchemas;
    std::size_t longestName;  // in bytes, what is behind is cut; 0: any length
};
inline constexpr DatabaseKind kDatabases[] = {
    {"SQLite", kSqliteScheme, "sqlite:FILE", true, false, 0},
    {"PostgreSQL", "postgresql://", "postgresql://USER@HOST/DATABASE", false, true, 63},
};

// Null: the URL names none of them.
constexpr const DatabaseKind* databaseOf(std::string_view url) {
    for (const DatabaseKind& kind : kDatabases) {
        if (url.starts_with(kind.scheme)) return &kind;
    }
    return nullptr;
}

}  // namespace host
