#include <algorithm>

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

constexpr DatabaseScheme kSchemes[] = {
    {"sqlite:", "sqlite:FILE", kMakeSqlite},
    {"postgresql://", "postgresql://HOST/DATABASE", kMakePostgres},
    {"postgres://", nullptr, kMakePostgres},  // another word for the one before
};

}  // namespace

std::span<const DatabaseScheme> databaseKinds() { return kSchemes; }

std::unique_ptr<DatabaseSession> makeSession(const SinkSettings& settings, const RowType& type,
                                             Access access) {
    const auto* found =
        std::find_if(std::begin(kSchemes), std::end(kSchemes),
                     [&](const DatabaseScheme& one) { return settings.url.starts_with(one.begin); });
    std::string forms;
    for (const DatabaseScheme& one : kSchemes) {
        if (one.form != nullptr && one.make != nullptr) addToList(forms, one.form, " or ");
    }
    const std::string begin = "sink.url is " + inQuotes(settings.url) + ", ";
    if (found == std::end(kSchemes))
        throw Failure(begin + "which is no database that is known here; it is " + forms + '.',
                      kBadConfiguration);
    if (found->make == nullptr)
        throw Failure(begin + "which this build has not been made for; it knows " +
                          (forms.empty() ? "no database" : forms) + '.',
                      kBadConfiguration);
    return found->make(settings, type, access);
}

}  // namespace host
