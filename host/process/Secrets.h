// What must not be shown.
#pragma once

#include <string>
#include <string_view>

namespace host {

// The text with *** for every password in it: behind a name with "password" or the like and an equals sign,
// as in ?jms.password=... or -Dx.trustStorePassword=..., and between user and host of a URL. Where it is in
// doubt how far a password goes, it is the longer one.
std::string withoutSecrets(std::string_view text);

}  // namespace host
