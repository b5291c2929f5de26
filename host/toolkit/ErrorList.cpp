#include "host/toolkit/ErrorList.h"

#include "host/toolkit/Context.h"
#include "host/toolkit/NewText.h"
#include "toolkit/kel_adapter_util.h"

namespace host {

namespace {

std::function<void(const char*, const RowFault*)>& errorSink() {
    static std::function<void(const char*, const RowFault*)> sink;
    return sink;
}

ErrorList* listOf(void* handle) { return static_cast<ErrorList*>(handle); }

}  // namespace

void setErrorSink(std::function<void(const char* text, const RowFault* fault)> sink) {
    errorSink() = std::move(sink);
}

void ErrorList::add(const char* text, const RowFault* fault) {
    {
        const std::lock_guard guard(lock_);
        texts_.emplace_back(text);
        bytes_ += texts_.back().size();
        while (texts_.size() > kMostTexts || (bytes_ > kMostBytes && texts_.size() > 1)) {
            bytes_ -= texts_.front().size();
            texts_.pop_front();
        }
    }
    if (errorSink()) errorSink()(text, fault);
}

void ErrorList::clear() {
    const std::lock_guard guard(lock_);
    texts_.clear();
    bytes_ = 0;
}

int ErrorList::count() const {
    const std::lock_guard guard(lock_);
    return static_cast<int>(texts_.size());
}

std::string ErrorList::all() const {
    const std::lock_guard guard(lock_);
    std::string lines;
    for (const std::string& text : texts_) {
        if (!lines.empty()) lines += '\n';
        lines += text;
    }
    return lines;
}

}  // namespace host

extern "C" {

void* createConnectionErrors() { return new host::ErrorList; }
void clearConnectionErrors(void* errors) { host::listOf(errors)->clear(); }
void deleteConnectionErrors(void* errors) { delete host::listOf(errors); }
void addGeneral(void* errors, const char* text) {
    if (errors != nullptr && text != nullptr) host::listOf(errors)->add(text);
}
bool empty(void* errors) { return host::listOf(errors)->count() == 0; }
int getAdapterError(void* errors, char** text) {
    const int count = host::listOf(errors)->count();
    if (count > 0) *text = host::newText(host::listOf(errors)->all());
    return count;
}

}  // extern "C"
