// The databases that a sink's URL can name, and how they take names.
#pragma once

#include <cstddef>
#include <string_view>

namespace host {

enum class DatabaseKind { kPostgres, kSqlite };

inline constexpr char kSqliteScheme[] = "sqlite:";

struct DatabaseRules {
    DatabaseKind kind;
    const char* name;
    const char* form;  // of a whole URL
    bool foldsCase;    // two names that differ in case alone are one
    bool hasSchemas;
    std::size_t longestName;  // in bytes, what is behind is cut; 0: any length
};
inline constexpr DatabaseRules kDatabases[] = {
    {DatabaseKind::kSqlite, "SQLite", "sqlite:FILE", true, false, 0},
    {DatabaseKind::kPostgres, "PostgreSQL", "postgresql://USER@HOST/DATABASE", false, true, 63},
};

constexpr const DatabaseRules& rulesOf(DatabaseKind kind) {
    return kDatabases[0].kind == kind ? kDatabases[0] : kDatabases[1];
}

// What URLs begin with.
struct DatabaseScheme {
    std::string_view begin;
    DatabaseKind kind;
};
inline constexpr DatabaseScheme kDatabaseSchemes[] = {
    {kSqliteScheme, DatabaseKind::kSqlite},
    {"postgresql://", DatabaseKind::kPostgres},
    {"postgres://", DatabaseKind::kPostgres},
};

// Null: the URL names none of them.
constexpr const DatabaseScheme* schemeOf(std::string_view url) {
    for (const DatabaseScheme& scheme : kDatabaseSchemes) {
        if (url.starts_with(scheme.begin)) return &scheme;
    }
    return nullptr;
}

}  // namespace host
