// What is new is said by who complains, where the output takes it at once. The rest is left in a table of a bounded
// number of kinds, for a thread that says it when the output is ready, and the counts of a second together.
#include "bus/complaints.h"

#include "base/patient_output.h"
#include "base/printable.h"
#include "base/text.h"

#include <exception>
#include <iterator>

namespace ribkit::bus {

namespace {

constexpr size_t most_kinds = 256;
constexpr std::chrono::seconds between_counts{1};
constexpr std::chrono::seconds memory{10}; ///< of a kind that does not come up any more
constexpr std::chrono::milliseconds patience{300};

std::string line_of(const std::string &kind, const std::string &detail) {
    return base::joined("ribkit: ", base::printable(kind), detail.empty() ? "" : ": ", base::printable(detail), '\n');
}

} // namespace

// Where memory fails it is a complaint less.
void complaints::add(const std::string &kind, const std::string &detail) noexcept {
    try {
        const std::scoped_lock locked(lock_);
        count(kind, detail);
        if (!saying_.joinable() && !ended_) {
            saying_ = std::thread([this] { say_them(); });
        }
        changed_.notify_one();
    } catch (const std::exception &) {
        return;
    }
}

void complaints::count(const std::string &kind, const std::string &detail) {
    if (const auto known = kinds_.find(kind); known != kinds_.end()) {
        known->second.unsaid++;
    } else if (kinds_.size() < most_kinds) {
        known_kind &made = kinds_.emplace(kind, known_kind{detail}).first->second;
        made.said = base::write_patiently(descriptor_, line_of(kind, detail), {}) > 0;
        made.due = clock::now() + between_counts;
        fresh_ = fresh_ || !made.said;
    } else {
        others_++;
    }
}

void complaints::end() {
    {
        const std::scoped_lock locked(lock_);
        ended_ = true;
        changed_.notify_one();
    }
    if (saying_.joinable()) {
        saying_.join();
    }
}

// Where a line is not taken, the others are not tried.
void complaints::print(const std::vector<std::string> &lines) {
    for (size_t i = 0; i < lines.size(); i++) {
        const std::string before =
            lost_ == 0 ? "" : base::joined('\n', "ribkit: nobody read: ", lost_, " lines were lost here\n");
        if (base::write_patiently(descriptor_, before + lines[i], patience) < before.size() + lines[i].size()) {
            lost_ += lines.size() - i;
            return;
        }
        lost_ = 0;
    }
}

void complaints::say_them() {
    base::ignore_gone_readers();
    std::unique_lock locked(lock_);
    for (bool more = true; more;) {
        more = wait_for_some(locked);
        try {
            const auto lines = take_lines(!more);
            locked.unlock();
            print(lines);
        } catch (const std::exception &) { // no memory for the text: later
        }
        if (!locked.owns_lock()) {
            locked.lock();
        }
    }
}

/// @return whether it goes on
bool complaints::wait_for_some(std::unique_lock<std::mutex> &locked) {
    const auto urgent = [this] { return fresh_ || ended_; };
    if (kinds_.empty() && others_ == 0) {
        changed_.wait(locked, urgent);
    } else {
        changed_.wait_for(locked, between_counts, urgent);
    }
    return !ended_;
}

std::vector<std::string> complaints::take_lines(bool all) {
    std::vector<std::string> lines;
    const auto now = clock::now();
    fresh_ = false;
    for (auto next = kinds_.begin(); next != kinds_.end();) {
        auto &[kind, known] = *next;
        if (!known.said) {
            lines.push_back(line_of(kind, known.detail));
            known.said = true;
            known.due = now + between_counts;
        }
        if (known.unsaid > 0 && (all || (each_second_ && now >= known.due))) {
            lines.push_back(base::joined("ribkit: ", base::printable(kind), ": ", known.unsaid, " more\n"));
            known.unsaid = 0;
            known.due = now + between_counts;
        }
        next = known.unsaid == 0 && now >= known.due + memory ? kinds_.erase(next) : std::next(next);
    }
    if (others_ > 0 && (all || each_second_)) {
        lines.push_back(base::joined("ribkit: ", others_, " more of other kinds\n"));
        others_ = 0;
    }
    return lines;
}

} // namespace ribkit::bus
