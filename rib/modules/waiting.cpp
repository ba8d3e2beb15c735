// A request is done when all that it has caused was answered. What the RIB itself refuses is said before anything that
// a module says.
#include "rib/modules/waiting.h"

#include <algorithm>
#include <array>
#include <new>

namespace ribkit::rib {

namespace {

/// From what tells least.
constexpr std::array ranks{RIB_OK,           RIB_VSAN_TCAM_FULL,   RIB_HW_FULL,        RIB_OUT_OF_MEMORY,
                           RIB_LC_UPGRADING, RIB_MISSING_RESPONSE, RIB_MISSING_DEVICE, RIB_TIMEOUT};

/// Other codes of a module are like a full table to its client: the route is not there.
size_t rank_of(uint32_t code) {
    const auto *found = std::find(ranks.begin(), ranks.end(), code);
    return found != ranks.end() ? static_cast<size_t>(found - ranks.begin()) : 2;
}

} // namespace

uint32_t worse_of(uint32_t one, uint32_t other) { return rank_of(other) > rank_of(one) ? other : one; }

waiting::id waiting::open() {
    do {
        last_++;
    } while (last_ == 0 || open_.contains(last_));
    open_[last_].number = last_;
    return last_;
}

void waiting::owe(id request) { open_.at(request).owed++; }

void waiting::settle(id request, const any_key &route, uint32_t code) noexcept {
    const auto found = open_.find(request);
    if (found != open_.end() && !found->second.over) {
        tell(request, route, code);
        found->second.owed--;
        finish_if_done(found->second);
    }
}

// Where there is no memory to remember the route it may be counted twice, and the answer says that memory failed.
void waiting::tell(id request, const any_key &route, uint32_t code) noexcept {
    const auto found = open_.find(request);
    if (code == RIB_OK || found == open_.end() || found->second.over) {
        return;
    }
    found->second.worst = worse_of(found->second.worst, code);
    try {
        found->second.missed.insert(route);
    } catch (const std::bad_alloc &) {
        found->second.worst = worse_of(found->second.worst, RIB_OUT_OF_MEMORY);
    }
}

void waiting::seal(id request, const update_answer &answer) noexcept {
    const auto found = open_.find(request);
    found->second.answer = answer;
    found->second.sealed = true;
    finish_if_done(found->second);
}

void waiting::give_up(id request) noexcept {
    const auto found = open_.find(request);
    if (found != open_.end() && !found->second.over) {
        found->second.worst = RIB_TIMEOUT;
        finish(found->second);
    }
}

void waiting::finish_if_done(one &request) noexcept {
    if (request.sealed && !request.over && request.owed == 0) {
        finish(request);
    }
}

void waiting::finish(one &request) noexcept {
    update_answer &answer = request.answer;
    answer.result = answer.result != RIB_OK ? answer.result : request.worst;
    answer.accepted -= std::min(answer.accepted, static_cast<uint32_t>(request.missed.size()));
    request.over = true;
    finished_++;
    (last_done_ == nullptr ? first_done_ : last_done_->next_done) = &request;
    last_done_ = &request;
}

std::optional<waiting::done> waiting::take_done() {
    if (first_done_ == nullptr) {
        return {};
    }
    const one &request = *first_done_;
    const done result{request.number, request.answer};
    first_done_ = request.next_done;
    last_done_ = first_done_ == nullptr ? nullptr : last_done_;
    finished_--;
    open_.erase(result.request);
    return result;
}

} // namespace ribkit::rib
