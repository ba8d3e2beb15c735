// A request is done when all that it has caused was answered. What the RIB itself refuses is said before anything that
// a module says.
#include "rib/modules/waiting.h"

#include <algorithm>
#include <array>
#include <new>
#include <utility>

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

/// Null where nobody waits any more.
waiting::one *waiting::find_open(id request) noexcept {
    const auto found = open_.find(request);
    return found == open_.end() || found->second.over ? nullptr : &found->second;
}

void waiting::settle(id request, const any_key &route, uint32_t code) noexcept {
    tell(request, route, code);
    settle(request, RIB_OK);
}

void waiting::settle(id request, uint32_t code) noexcept {
    if (one *open = find_open(request); open != nullptr) {
        tell(request, code);
        open->owed--;
        finish_if_done(*open);
    }
}

void waiting::tell(id request, uint32_t code) noexcept {
    if (one *open = find_open(request); open != nullptr) {
        open->worst = worse_of(open->worst, code);
    }
}

// Where there is no memory to remember the route it may be counted twice, and the answer says that memory failed.
void waiting::tell(id request, const any_key &route, uint32_t code) noexcept {
    one *open = find_open(request);
    if (code == RIB_OK || open == nullptr) {
        return;
    }
    tell(request, code);
    try {
        open->missed.insert(route);
    } catch (const std::bad_alloc &) {
        tell(request, RIB_OUT_OF_MEMORY);
    }
}

void waiting::compare(id request) noexcept { open_.at(request).found.emplace(findings{}); }

bool waiting::find(id request, const any_key &route, uint32_t status) noexcept {
    one *open = find_open(request);
    if (open == nullptr || open->found->keys.size() >= most_found) {
        return false;
    }
    try {
        open->found->keys.emplace(route, status);
        if (status != FIB_VERF_NOT_IN_RIB) {
            open->missed.insert(route);
        }
        tell(request, RIB_FAILED);
    } catch (const std::bad_alloc &) {
        tell(request, RIB_OUT_OF_MEMORY);
    }
    return true;
}

void waiting::count_named(id request, uint32_t named) noexcept {
    if (one *open = find_open(request); open != nullptr) {
        open->found->named = std::max(open->found->named, named);
    }
}

void waiting::seal(id request, const update_answer &answer) noexcept {
    const auto found = open_.find(request);
    found->second.answer = answer;
    found->second.sealed = true;
    finish_if_done(found->second);
}

void waiting::give_up(id request) noexcept {
    if (one *open = find_open(request); open != nullptr) {
        open->worst = RIB_TIMEOUT;
        finish(*open);
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
    if (request.found) { // of what a module has not said nothing is known
        request.found->complete = answer.result == RIB_OK || answer.result == RIB_FAILED;
        answer.accepted = request.found->complete ? request.found->named : 0;
    }
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
    one &request = *first_done_;
    done result{request.number, request.answer, std::move(request.found)};
    first_done_ = request.next_done;
    last_done_ = first_done_ == nullptr ? nullptr : last_done_;
    finished_--;
    open_.erase(result.request);
    return result;
}

} // namespace ribkit::rib
