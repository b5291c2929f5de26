// The object itself and its dictionary.
#include "fix/NewFixUtils.h"

#include <pcre.h>

#include <array>
#include <fstream>
#include <utility>

#include "adapter/Adapter.h"
#include "fix/FixColumns.h"
#include "fix/LogLevels.h"
#include "toolkit/kel_intl.h"
#include "util/StringUtils.h"

using MORVEX::Kel::strprintf;

// A dictionary line: the first "word=word" wherever it stands.
class NewFixUtils::LinePattern {
public:
    LinePattern() {
        const char* error = nullptr;
        int offset = 0;
        code_ = pcre_compile("(\\w+)=(\\w+)", 0, &error, &offset, nullptr);
    }
    ~LinePattern() {
        if (code_ != nullptr) pcre_free(code_);
    }
    LinePattern(const LinePattern&) = delete;
    LinePattern& operator=(const LinePattern&) = delete;

    bool match(const std::string& line, std::string& tag, std::string& name) const {
        constexpr int kPairs = 3;
        std::array<int, 9> offsets{};  // three pairs; the library works in the last third
        const int pairs = pcre_exec(code_, nullptr, line.data(), static_cast<int>(line.size()), 0, 0,
                                    offsets.data(), static_cast<int>(offsets.size()));
        if (pairs != kPairs) return false;
        tag = line.substr(offsets[2], offsets[3] - offsets[2]);
        name = line.substr(offsets[4], offsets[5] - offsets[4]);
        return true;
    }

private:
    pcre* code_;  // null, which matches nothing, if the library could not compile it
};

NewFixUtils::NewFixUtils()
    : checkSumMarker(strprintf("%c%s=", fieldSeparator, checkSumTag.c_str())),
      checkSumMarkerLength(static_cast<int32_t>(checkSumMarker.size())),
      linePattern_(std::make_unique<LinePattern>()),
      wanted_(std::make_unique<WantedFields>()) {}

NewFixUtils::~NewFixUtils() = default;

void NewFixUtils::reset(Adapter* adapter) { adapter_ = adapter; }

bool NewFixUtils::makeDictionary(const std::string& version) {
    trace("NewFixUtils::makeDictionary()");
    fixVersion_ = version;
    char home[2048];
    if (MORVEX::Kel::intl_getenv("KEL_HOME", home, sizeof home) < 1)
        return refuse("KEL_HOME environment variable not set");
    const std::string path =
        strprintf("%s%cetc%cfix%cdictionary%s.txt", home, '/', '/', '/', version.c_str());

    std::ifstream file(path);
    std::vector<std::pair<std::string, std::string>> entries;
    std::string line, tag, name;
    while (std::getline(file, line)) {
        if (linePattern_->match(line, tag, name)) entries.emplace_back(tag, name);
    }
    // A directory opens, and only reading it fails.
    if (!file.is_open() || file.bad()) return refuse(strprintf("Cannot open file %s", path.c_str()));

    for (const auto& [entryTag, entryName] : entries) {
        nameByTag_[entryTag] = entryName;
        tagByName_[entryName] = entryTag;
    }
    columns_.clear();
    return true;
}

bool NewFixUtils::fieldNameByTag(const std::string& tag, std::string& name) const {
    const auto entry = nameByTag_.find(tag);
    if (entry == nameByTag_.end()) return false;
    name = entry->second;
    return true;
}

void NewFixUtils::setExitRequested(bool requested) { exitRequested_ = requested; }
bool NewFixUtils::isExitRequested() const { return exitRequested_; }

void NewFixUtils::trace(const char* operation) const {
    if (adapter_ != nullptr) adapter_->callLogMessage(fix::kTrace, operation);
}

void NewFixUtils::log(int level, const std::string& text) const {
    if (adapter_ != nullptr) adapter_->callLogMessage(level, text);
}

bool NewFixUtils::refuse(const std::string& text) const {
    if (adapter_ != nullptr) adapter_->addGeneral(adapter_->connectionErrors, text.c_str());
    return false;
}
