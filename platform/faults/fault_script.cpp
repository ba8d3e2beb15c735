// The script as a list of rules, each asked about every call or message that it concerns.
#include "platform/faults/fault_script.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <optional>
#include <sstream>
#include <utility>

namespace ribkit::platform {

namespace {

template <typename Value> struct named {
    const char *name;
    Value value;
};
template <typename Value> named(const char *, Value) -> named<Value>;

constexpr std::array calls{named{"open", service_call::open}, named{"listen", service_call::listen},
                           named{"send", service_call::send}, named{"recv", service_call::recv},
                           named{"drop", service_call::drop}};

constexpr std::array errnos{named{"EACCES", EACCES},
                            named{"EADDRINUSE", EADDRINUSE},
                            named{"EAGAIN", EAGAIN},
                            named{"EBADF", EBADF},
                            named{"EBADMSG", EBADMSG},
                            named{"ECANCELED", ECANCELED},
                            named{"ECONNREFUSED", ECONNREFUSED},
                            named{"ECONNRESET", ECONNRESET},
                            named{"EHOSTUNREACH", EHOSTUNREACH},
                            named{"EINTR", EINTR},
                            named{"EINVAL", EINVAL},
                            named{"EIO", EIO},
                            named{"EMSGSIZE", EMSGSIZE},
                            named{"ENETDOWN", ENETDOWN},
                            named{"ENOBUFS", ENOBUFS},
                            named{"ENOMEM", ENOMEM},
                            named{"ENOTCONN", ENOTCONN},
                            named{"ENOTSUP", ENOTSUP},
                            named{"EPERM", EPERM},
                            named{"EPIPE", EPIPE},
                            named{"EPROTO", EPROTO},
                            named{"ETIMEDOUT", ETIMEDOUT}};

template <typename Table> auto find_named(const Table &table, const std::string &name) {
    return std::find_if(table.begin(), table.end(), [&](const auto &row) { return name == row.name; });
}

std::optional<uint32_t> number(const std::string &word) {
    uint32_t value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    return error == std::errc{} && end == word.data() + word.size() ? std::optional{value} : std::nullopt;
}

std::optional<uint32_t> errno_named(const std::string &word) {
    const auto *row = find_named(errnos, word);
    const std::optional<uint32_t> value = row != errnos.end() ? static_cast<uint32_t>(row->value) : number(word);
    return value == 0U ? std::nullopt : value;
}

std::vector<std::string> split(const std::string &line) {
    std::istringstream rest{line};
    rest.exceptions(std::ios::badbit);
    std::vector<std::string> words;
    for (std::string word; rest >> word;) {
        words.push_back(word);
    }
    return words;
}

} // namespace

std::string fault_script::parse(const std::string &text) {
    std::istringstream lines{text};
    lines.exceptions(std::ios::badbit); // or a line that there is no memory for would be the end
    std::string line;
    for (line_ = 1; std::getline(lines, line); ++line_) {
        const words found = split(line.substr(0, line.find('#')));
        const std::string wrong = found.empty() ? "" : parse_line(found);
        if (!wrong.empty()) {
            return std::to_string(line_) + ": " + wrong;
        }
    }
    return "";
}

std::string fault_script::parse_line(const words &line) {
    if (line == words{"clock", "virtual"}) {
        virtual_clock_line_ = line_;
        return "";
    }
    if (line[0] == "seed") {
        const auto value = line.size() == 2 ? number(line[1]) : std::nullopt;
        if (!value) {
            return "seed takes one number";
        }
        random_.seed(*value);
        return "";
    }
    return parse_rule(line);
}

std::string fault_script::parse_rule(const words &line) {
    struct shape {
        happening what;
        const char *value; // what its last word is; null where it has none
    };
    static constexpr std::array shapes{
        named{"fail", shape{happening::fail, "an errno"}},
        named{"drop", shape{happening::drop, nullptr}},
        named{"delay", shape{happening::delay, "milliseconds"}},
        named{"duplicate", shape{happening::duplicate, nullptr}},
        named{"reorder", shape{happening::reorder, nullptr}},
        named{"truncate", shape{happening::truncate, "bytes"}},
    };
    const auto *known = find_named(shapes, line[0]);
    if (known == shapes.end()) {
        return "no such event: " + line[0];
    }
    rule made{known->value.what, service_call::open, rhythm::once, 0, 0};
    size_t next = 1;
    const auto word = [&] { return next < line.size() ? line[next++] : std::string{}; };
    if (made.what == happening::fail) {
        const std::string name = word();
        const auto *call = find_named(calls, name);
        if (call == calls.end()) {
            return "no such call: " + name;
        }
        made.call = call->value;
    }
    std::string when = word();
    if (when == "every" || when == "one-in") {
        made.when = when == "every" ? rhythm::every : rhythm::one_in;
        when = word();
    }
    made.n = number(when).value_or(0);
    if (made.n == 0) {
        return "a count from 1 is missing";
    }
    if (known->value.value != nullptr) {
        const std::string last = word();
        const auto value = made.what == happening::fail ? errno_named(last) : number(last);
        if (!value) {
            return std::string{known->value.value} + " is missing";
        }
        made.value = *value;
    }
    if (next != line.size()) {
        return "too many words";
    }
    rules_.push_back(made);
    return "";
}

bool fault_script::happens(const rule &one, uint64_t count) {
    switch (one.when) {
    case rhythm::once:
        return count == one.n;
    case rhythm::every:
        return count % one.n == 0;
    default:
        return random_() % one.n == 0;
    }
}

int fault_script::failure_of(service_call call) {
    const std::scoped_lock lock{lock_};
    const uint64_t count = ++calls_[static_cast<size_t>(call)];
    int failure = 0;
    for (const rule &one : rules_) {
        if (one.what == happening::fail && one.call == call && happens(one, count) && failure == 0) {
            failure = static_cast<int>(one.value);
        }
    }
    return failure;
}

disturbance fault_script::next_message() {
    const std::scoped_lock lock{lock_};
    ++messages_;
    disturbance found;
    for (const rule &one : rules_) {
        if (one.what == happening::fail || !happens(one, messages_)) {
            continue;
        }
        found.lost |= one.what == happening::drop;
        found.twice |= one.what == happening::duplicate;
        found.behind_the_next |= one.what == happening::reorder;
        found.milliseconds_late = one.what == happening::delay ? one.value : found.milliseconds_late;
        found.most_bytes = one.what == happening::truncate ? one.value : found.most_bytes;
    }
    return found;
}

} // namespace ribkit::platform
