// The message catalogue: from a message's key and parameters to the text that a user reads.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

namespace host {

class Catalogue {
public:
    bool load(const std::string& file, std::string& error);

    // "KEY: text" with the parameters in their places; the key followed by its parameters when it is
    // unknown. An array-new buffer.
    char* newMessage(const char* key, std::span<const char* const> parameters) const;

private:
    struct Hash {
        using is_transparent = void;
        size_t operator()(std::string_view key) const { return std::hash<std::string_view>()(key); }
    };
    // The value begins with the key, so that a text without parameters, as every trace is, is only copied.
    std::unordered_map<std::string, std::string, Hash, std::equal_to<>> texts_;
};

// The one that the C interface answers from.
Catalogue& sharedCatalogue();

}  // namespace host
