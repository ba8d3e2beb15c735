// Whoever connects sends messages, as many as the listener has said that it has room for: its bound at first, then one
// more for every message that it has read. An answer goes back over the same connection. What a socket does not take at
// once is queued and sent by the endpoint's thread.
#include "platform/unix/unix_endpoint.h"

#include "platform/history.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <new>

namespace ribkit::platform {

namespace {

using namespace std::chrono_literals;

constexpr uint64_t most_queued = 1 << 20;  // bytes beyond which a send waits
constexpr uint64_t most_answers = 8 << 20; // bytes beyond which whoever does not read its answers is cut off
constexpr auto slow_member_limit = 1s;     // how long a group waits for one without room

bool is_gone(int error) { return error == EPIPE || error == ECONNRESET || error == ENOTCONN; }

} // namespace

int unix_endpoint::send(const qip_addr &address, message letter, bool may_wait, uint32_t *token) {
    if (letter.size > largest_message) {
        return EMSGSIZE;
    }
    locked lock{office_->lock};
    if (token != nullptr) {
        *token = box_->new_token();
        if (const int error = box_->expect(*token); error != 0) {
            return error;
        }
        letter.token = *token;
    }
    const uint32_t awaited = letter.token;
    int error = 0;
    try {
        if (is_group(address)) {
            error = send_to_group(address, std::move(letter), may_wait, awaited, lock);
        } else {
            error = send_to_one(unix_place::name_of(address), std::move(letter), may_wait, awaited, lock);
        }
    } catch (const std::bad_alloc &) {
        error = ENOMEM;
    }
    if (error != 0 && token != nullptr) {
        box_->expect_no_more(*token);
    }
    return error;
}

// Connects where there is no connection.
int unix_endpoint::find(const std::string &name, connection_ptr &found) {
    if (const auto known = to_.find(name); known != to_.end()) {
        found = known->second;
        return 0;
    }
    descriptor socket;
    uint32_t bound = 0;
    if (const int error = place_.connect(name, socket, bound); error != 0) {
        return error;
    }
    auto made = std::make_shared<unix_connection>(std::move(socket));
    made->name = name;
    made->room = bound;
    connections_.emplace(made->socket(), made);
    try {
        to_.emplace(name, made);
    } catch (const std::bad_alloc &) {
        connections_.erase(made->socket());
        throw;
    }
    watch(*made);
    reconnections_ += static_cast<uint32_t>(lost_.erase(name));
    found = std::move(made);
    return 0;
}

// What the listener has said meanwhile is read first.
bool unix_endpoint::has_room(const connection_ptr &to) {
    const auto has = [&] { return to->room != 0 && to->bytes_to_send() < most_queued; };
    if (!has()) {
        read(to);
    }
    return to->is_open() && has();
}

// On failure the letter is there again.
int unix_endpoint::post(const connection_ptr &to, message &letter, uint32_t token) {
    if (token != 0) {
        to->asked.insert(token);
    }
    to->post(packet_kind::message, std::move(letter));
    --to->room;
    const int error = to->flush();
    if (error == 0 || error == EAGAIN) {
        to->is_socket_full = error == EAGAIN;
        watch(*to);
        return 0;
    }
    letter = to->unpost();
    to->asked.erase(token);
    read(to); // the listener may have said why
    drop(to, ECONNRESET);
    return is_gone(error) ? to->ended_by : error;
}

int unix_endpoint::send_to_one(const std::string &name, message letter, bool may_wait, uint32_t token, locked &lock) {
    constexpr int most_attempts = 3;
    for (int attempts = 0; attempts < most_attempts;) {
        if (box_->closed()) {
            return ECANCELED;
        }
        connection_ptr to;
        const int missing = find(name, to);
        if (missing == EAGAIN && may_wait) {
            changed_.wait_for(lock, 10ms); // too many are about to connect
            continue;
        }
        if (missing != 0) {
            return missing;
        }
        if (has_room(to)) {
            const int error = post(to, letter, token);
            if (error == 0) {
                return may_wait ? wait_until_sent(to, to->last_posted(), lock) : 0;
            }
            if (!is_gone(error)) {
                return error;
            }
            ++attempts; // perhaps another listens there now
        } else if (to->is_open() && !may_wait) {
            return EAGAIN;
        } else if (to->is_open()) {
            changed_.wait(lock);
        }
    }
    return ENOTCONN;
}

int unix_endpoint::wait_until_sent(const connection_ptr &to, uint64_t number, locked &lock) {
    changed_.wait(lock, [&] { return to->has_sent(number) || !to->is_open() || box_->closed(); });
    return to->has_sent(number) ? 0 : box_->closed() ? ECANCELED : ENOTCONN;
}

int unix_endpoint::find_members(const qip_addr &group, std::vector<connection_ptr> &found) {
    std::vector<std::string> names;
    if (const int error = place_.members(group, names); error != 0) {
        return error;
    }
    for (const std::string &name : names) {
        connection_ptr member;
        const int error = find(name, member);
        if (error == 0) {
            found.push_back(std::move(member));
        } else if (error == ENOTCONN) {
            place_.remove_if_dead(name);
        } else {
            record_quietly("unix: a listener of a group cannot be reached");
        }
    }
    return 0;
}

/// Whether a member has been without room for as long as it is waited for, of whoever cannot wait but comes again.
bool unix_endpoint::is_given_up(const connection_ptr &member) {
    const auto now = std::chrono::steady_clock::now();
    if (has_room(member)) {
        member->full_since = {};
        return false;
    }
    if (member->full_since == std::chrono::steady_clock::time_point{}) {
        member->full_since = now;
    }
    return now - member->full_since >= slow_member_limit;
}

// Nobody waits for ever for a member that does not read. Once it reads again it hears that something is missing.
int unix_endpoint::send_to_group(const qip_addr &group, message letter, bool may_wait, uint32_t token, locked &lock) {
    const auto limit = std::chrono::steady_clock::now() + slow_member_limit;
    std::vector<connection_ptr> members;
    const auto is_full = [this](const connection_ptr &one) { return !has_room(one); };
    const auto is_awaited = [&](const connection_ptr &one) {
        return is_full(one) && one->is_open() && !one->is_slow && !is_given_up(one);
    };
    for (;;) {
        if (box_->closed()) {
            return ECANCELED;
        }
        members.clear();
        if (const int error = find_members(group, members); error != 0) {
            return error;
        }
        if (std::none_of(members.begin(), members.end(), is_awaited)) {
            break;
        }
        if (!may_wait) {
            return EAGAIN;
        }
        if (changed_.wait_until(lock, limit) == std::cv_status::timeout) {
            break;
        }
    }
    for (const connection_ptr &one : members) {
        one->is_slow = is_full(one) || (one->lacks_some && (one->bytes_to_send() != 0 || one->say_gap() != 0));
        message copy = copy_of(letter);
        copy.token = token;
        if (one->is_slow) {
            record_event("unix: a listener of " + one->name + " does not read, and missed a message");
            one->lacks_some = true;
        } else {
            one->lacks_some = false;
            post(one, copy, token);
        }
    }
    return 0;
}

int unix_endpoint::send_answer(const connection_ptr &to, message letter) {
    if (letter.size > largest_message) {
        return EMSGSIZE;
    }
    const std::scoped_lock lock{office_->lock};
    if (box_->closed()) {
        return ECANCELED;
    }
    if (!to->is_open()) {
        return 0;
    }
    if (to->bytes_to_send() > most_answers) {
        record_quietly("unix: a connection whose answers are not read was closed");
        drop(to, ENOBUFS);
        return 0;
    }
    to->post(packet_kind::answer, std::move(letter));
    flush(to);
    return 0;
}

} // namespace ribkit::platform
