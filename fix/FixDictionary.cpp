// The object itself and its dictionary.
#include "fix/NewFixUtils.h"

#include "adapter/Adapter.h"
#include "fix/DictionaryFile.h"
#include "fix/FixColumns.h"
#include "fix/LogLevels.h"
#include "toolkit/kel_intl.h"
#include "util/StringUtils.h"

using MORVEX::Kel::strprintf;

NewFixUtils::NewFixUtils()
    : checkSumMarker(strprintf("%c%s=", fieldSeparator, checkSumTag.c_str())),
      checkSumMarkerLength(static_cast<int32_t>(checkSumMarker.size())),
      wanted_(std::make_unique<WantedFields>()) {}

NewFixUtils::~NewFixUtils() = default;

void NewFixUtils::reset(Adapter* adapter) { adapter_ = adapter; }

bool NewFixUtils::makeDictionary(const std::string& version) {
    trace("NewFixUtils::makeDictionary()");
    fixVersion_ = version;
    char home[2048];
    if (MORVEX::Kel::intl_getenv("KEL_HOME", home, sizeof home) < 1)
        return refuse("KEL_HOME environment variable not set");
    const std::string path = std::string(home) + "/etc/fix/dictionary" + version + ".txt";

    const auto entries = fix::readDictionary(path);
    if (!entries) return refuse(strprintf("Cannot open file %s", path.c_str()));

    for (const auto& [entryTag, entryName] : *entries) {
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
