// Why a message that the adapter counts as bad is no row.
#pragma once

#include <optional>

#include "host/configuration/Settings.h"
#include "host/connection/AdapterErrors.h"
#include "host/connection/Delivery.h"

namespace host {

// The connector's own reason, else what the adapter reported or logged, else what only a look at the message
// can tell: the adapter passes over in silence what is for another stream. `delivery` null: nobody can look.
// The error that is the reason is taken from `heard`. None, and said: there was no message at all.
std::optional<Reject> reasonOf(const Settings& settings, HeardErrors& heard, Delivery* delivery,
                               size_t message);

}  // namespace host
