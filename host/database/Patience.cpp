#include "host/database/Patience.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "host/process/Console.h"
#include "host/process/Failure.h"
#include "host/process/Signals.h"

namespace host {

namespace {

constexpr std::chrono::milliseconds kFirstWait(100);
constexpr std::chrono::milliseconds kLongestWait(5000);
constexpr std::chrono::milliseconds kSlice(250);  // between two calls of what goes on meanwhile
constexpr std::chrono::seconds kRemindAfter(60);
constexpr std::chrono::seconds kWorthTelling(1);  // two who were in each other's way are done by then

std::string secondsText(double seconds) { return std::to_string(std::lround(std::max(seconds, 1.0))) + " s"; }

}  // namespace

void StopRequest::stop() {
    const std::lock_guard guard(lock_);
    isStopped_ = true;
    changed_.notify_all();
}

bool StopRequest::isStopped() const {
    const std::lock_guard guard(lock_);
    return isStopped_;
}

void StopRequest::wait(std::chrono::milliseconds time) const {
    std::unique_lock guard(lock_);
    changed_.wait_for(guard, time, [this] { return isStopped_; });
}

Patience::Patience(const StopRequest& stop, std::int64_t retrySeconds, size_t messages,
                   std::function<void()> meanwhile)
    : stop_(stop),
      limit_(retrySeconds),
      messages_(messages),
      meanwhile_(std::move(meanwhile)),
      showsStatus_(canShowStatus()),
      next_(kFirstWait) {}

Patience::~Patience() {
    if (showsStatus_ && told_) hideStatus();
}

std::string Patience::waiting(const std::string& reason, std::chrono::milliseconds next) const {
    std::string sentence = "The database does not answer (" + reason + "); ";
    if (messages_ > 0)
        sentence += std::to_string(messages_) +
                    (messages_ == 1 ? " message waits for it, " : " messages wait for it, ");
    return sentence + "next try in " + secondsText(std::chrono::duration<double>(next).count()) + '.';
}

void Patience::pass(std::chrono::milliseconds time) const {
    const Clock::time_point end = Clock::now() + time;
    while (!stop_.isStopped() && Clock::now() < end) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        stop_.wait(meanwhile_ ? std::min(left, kSlice) : left);
        if (meanwhile_) meanwhile_();
    }
}

void Patience::await(const std::string& reason) {
    const Clock::time_point now = Clock::now();
    if (!start_) start_ = now;
    const double past = secondsBetween(*start_, now);
    const bool isOver = limit_.count() > 0 && now - *start_ >= limit_;
    if (stop_.isStopped() && messages_ == 0) throw Failure(kStoppedEarly);
    if (stop_.isStopped() || isOver) {
        const std::string left = messages_ == 0 ? "."
                                 : messages_ == 1
                                     ? "; its 1 message comes again."
                                     : "; its " + std::to_string(messages_) + " messages come again.";
        throw Failure("The database does not answer (" + reason + ')' +
                      (isOver ? " for " + secondsText(past) + ", the limit of sink.retrySeconds"
                              : ", and the stop does not wait for it") +
                      left);
    }
    if (now - begin_ >= kWorthTelling && (!told_ || now - *told_ >= kRemindAfter)) {
        say(waiting(reason, next_));
        told_ = now;
    }
    if (told_ && showsStatus_) showStatus(waiting(reason, next_));
    auto wait = next_;
    if (limit_.count() > 0)
        wait = std::min(wait, std::chrono::duration_cast<std::chrono::milliseconds>(*start_ + limit_ - now));
    pass(wait);
    seconds_ += secondsBetween(now, Clock::now());
    next_ = std::min(2 * next_, kLongestWait);
}

void Patience::isBack() {
    if (told_)
        say("The database answers again after " + secondsText(secondsBetween(*start_, Clock::now())) + '.');
    if (told_ && showsStatus_) hideStatus();
    told_.reset();
    start_.reset();
    begin_ = Clock::now();
    next_ = kFirstWait;
}

}  // namespace host
