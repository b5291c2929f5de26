#include "host/database/DatabaseSession.h"
#ifdef KEL_SQLITE
#include "host/database/SqliteSession.h"
#endif
#ifdef KEL_POSTGRESQL
#include "host/database/PostgresSession.h"
#endif
#include "host/process/Failure.h"
#include "host/values/Text.h"

namespace host {

namespace {

using Make = std::unique_ptr<DatabaseSession> (*)(const SinkSettings&, const RowType&, Access);

#if defined(KEL_SQLITE) || defined(KEL_POSTGRESQL)
template <typename Kind>
std::unique_ptr<DatabaseSession> make(const SinkSettings& settings, const RowType& type, Access access) {
    return std::make_unique<Kind>(settings, type, access);
}
#endif

#ifdef KEL_SQLITE
constexpr Make kMakeSqlite = make<SqliteSession>;
#else
constexpr Make kMakeSqlite = nullptr;
#endif
#ifdef KEL_POSTGRESQL
constexpr Make kMakePostgres = make<PostgresSession>;
#else
constexpr Make kMakePostgres = nullptr;
#endif

Make makerOf(DatabaseKind kind) { return kind == DatabaseKind::kSqlite ? kMakeSqlite : kMakePostgres; }

}  // namespace

std::unique_ptr<DatabaseSession> makeSession(const SinkSettings& settings, const RowType& type,
                                             Access access) {
    const DatabaseScheme* scheme = schemeOf(settings.url);
    const Make make = scheme != nullptr ? makerOf(scheme->kind) : nullptr;
    if (make != nullptr) return make(settings, type, access);
    std::string forms;
    for (const DatabaseRules& one : kDatabases) {
        if (makerOf(one.kind) != nullptr) addToList(forms, one.form, " or ");
    }
    const std::string begin = "sink.url is " + inQuotes(settings.url) + ", ";
    if (scheme == nullptr)
        throw Failure(begin + "which is no database that is known here; it is " + forms + '.',
                      kBadConfiguration);
    throw Failure(begin + "which this build has not been made for; it knows " +
                      (forms.empty() ? "no database" : forms) + '.',
                  kBadConfiguration);
}

}  // namespace host
