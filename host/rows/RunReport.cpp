#include "host/rows/RunReport.h"

#include <array>
#include <cstdio>

#include "host/process/Console.h"

namespace host {

namespace {

constexpr std::chrono::milliseconds kRedraw(500);

}  // namespace

void sayTotals(const Totals& totals, double seconds) {
    const double rate = seconds > 0 ? static_cast<double>(totals.good) / seconds : 0;
    std::array<char, 160> text;
    std::snprintf(text.data(), text.size(), "total %lld, good %lld, bad %lld, %.3f s, %.0f rows/s",
                  static_cast<long long>(totals.total), static_cast<long long>(totals.good),
                  static_cast<long long>(totals.bad), seconds, rate);
    say(text.data());
}

void sayBatches(const Totals& totals) {
    std::array<char, 160> text;
    std::snprintf(text.data(), text.size(), "repeated %lld, batches %lld, waited %.3f s for the database",
                  static_cast<long long>(totals.repeated), static_cast<long long>(totals.batches),
                  totals.waited);
    say(text.data());
}

StatusLine::StatusLine(Clock::time_point start, std::function<bool()> isConnected)
    : isShown_(canShowStatus()), isConnected_(std::move(isConnected)), drawn_(start) {}

StatusLine::~StatusLine() { hideStatus(); }

void StatusLine::update(const Totals& totals, Clock::time_point now) {
    if (!isShown_ || now - drawn_ < kRedraw) return;
    const double rate = static_cast<double>(totals.good - goodThen_) / secondsBetween(drawn_, now);
    std::array<char, 160> text;
    const std::string repeated =
        totals.repeated > 0 ? ", repeated " + std::to_string(totals.repeated) : std::string();
    std::snprintf(text.data(), text.size(), "good %lld, bad %lld%s, %.0f rows/s%s",
                  static_cast<long long>(totals.good), static_cast<long long>(totals.bad), repeated.c_str(),
                  rate, isConnected_() ? "" : ", no connection");
    showStatus(text.data());
    drawn_ = now;
    goodThen_ = totals.good;
}

}  // namespace host
