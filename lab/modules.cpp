// Entries are compared by what they send where; what else they say is the module's own finding.
#include "lab/modules.h"

#include "base/text.h"
#include "bus/patience.h"
#include "bus/rib_link.h"
#include "lab/run_text.h"
#include "ribkit_platform.h"

#include <algorithm>

namespace ribkit::lab {

namespace {

/// An interface, and the domain that it leads to, where that is known.
using way = std::pair<uint32_t, uint32_t>;

std::vector<way> ways_in(std::span<const uint32_t> words, bool with_domains) {
    std::vector<way> ways;
    while (!words.empty()) {
        const auto one = model::take_label_hop(words);
        ways.emplace_back(one[1], with_domains ? model::domain_of_ctrl(one[0]) : 0);
    }
    return ways;
}

// What the RIB wants, and what a module has: both as far as they are compared.

std::vector<way> wanted_ways(const model::route_values &what) {
    std::vector<way> ways;
    for (const model::next_hop &hop : what.hops.first(std::min<size_t>(what.hops.size(), model::most_paths))) {
        ways.emplace_back(hop.if_index, hop.domain);
    }
    return ways;
}
std::vector<way> held_ways(const model::fib_unicast &what) { return ways_in(what.ways, true); }

std::vector<way> wanted_ways(const model::multicast_values &what) {
    std::vector<way> ways;
    for (const uint32_t member : what.members) {
        ways.emplace_back(member, 0);
    }
    return ways;
}
std::vector<way> held_ways(const model::multicast_values &what) { return wanted_ways(what); }

std::vector<way> wanted_ways(const model::label_values &what) {
    auto ways = ways_in(what.hops, false);
    ways.resize(std::min<size_t>(ways.size(), model::most_paths));
    return ways;
}
std::vector<way> held_ways(const model::fib_label &what) { return ways_in(what.ways, false); }

template <class RibKind, class FibKind>
void compare(const rib::state &wanted, const fib::state &has, module_difference &found) {
    const auto &routes = wanted.routes<RibKind>();
    const auto &entries = has.entries<FibKind>().all();
    size_t shared = 0;
    for (const auto &[key, active] : routes.all()) {
        if (wanted.suspended().contains(key.vsan)) {
            continue;
        }
        const auto entry = entries.find(key);
        if (entry == entries.end()) {
            found.missing++;
            continue;
        }
        shared++;
        const bool same = wanted_ways(routes.read(*active)) == held_ways(fib::table<FibKind>::read(entry->second));
        found.different += same ? 0 : 1;
    }
    found.extra += entries.size() - shared;
}

/// Routes that every module should have.
size_t wanted_by_all(const rib::state &wanted) {
    const auto count = [&](const auto &all) {
        return static_cast<size_t>(std::count_if(
            all.begin(), all.end(), [&](const auto &route) { return !wanted.suspended().contains(route.first.vsan); }));
    };
    return count(wanted.routes<rib::unicast>().all()) + count(wanted.routes<rib::multicast>().all()) +
           count(wanted.routes<rib::label>().all());
}

} // namespace

module_difference difference_between(const rib::state &wanted, const fib::state &has) {
    module_difference found;
    compare<rib::unicast, fib::unicast>(wanted, has, found);
    compare<rib::multicast, fib::multicast>(wanted, has, found);
    compare<rib::label, fib::label>(wanted, has, found);
    return found;
}

running_modules::running_modules(const std::vector<fabric_module> &modules, const rib::rib_service &rib,
                                 const std::string &url, std::chrono::milliseconds limit, bool traces)
    : modules_(modules), rib_(rib), url_(url), limit_(limit), traces_(traces), running_(modules.size()) {
    for (size_t index = 0; index < size(); index++) {
        start(index);
    }
    settle();
}

void running_modules::start(size_t index) {
    const fabric_module &one = modules_[index];
    fib::fib_options options;
    options.number = one.number;
    options.sizes = one.sizes;
    options.ports = fib::usual_ports(one.number, one.ports);
    options.slow = one.slow;
    options.trace = traces_ && index == 0;
    running_[index] = std::make_unique<fib::fib_service>(url_, options);
}

module_now running_modules::happen(const fabric_module &about, const fabric_event &event) {
    modules_[event.index] = about;
    std::unique_ptr<fib::fib_service> &one = running_[event.index];
    const bool was_there = one != nullptr;
    if (event.turn == module_turn::goes_down || event.turn == module_turn::restarts) {
        one.reset();
    }
    if (event.turn == module_turn::restarts || (event.turn == module_turn::comes_up && !was_there)) {
        start(event.index);
    } else if (one != nullptr) {
        one->set_upgrading(event.turn == module_turn::upgrades);
    }
    if (!probe_) {
        probe_.emplace(url_, limit_);
    }
    bus::is_answered(*probe_); // behind what the module has said
    settle();
    return now(event.index);
}

// One that has just started is active when it has been given what there is.
void running_modules::settle() const {
    const auto is_at_work = [](const std::unique_ptr<fib::fib_service> &one) {
        return one == nullptr || one->read([](const fib::module &of) {
            return of.fib.now() == model::fib_state::active || of.fib.now() == model::fib_state::upgrading;
        });
    };
    wait_until(limit_, [&] { return std::all_of(running_.begin(), running_.end(), is_at_work) && rib_.has_settled(); });
}

module_now running_modules::now(size_t index) const {
    if (running_[index] == nullptr) {
        return {};
    }
    module_now is{.answered = running_[index]->answered()};
    running_[index]->read([&](const fib::module &of) {
        is.state = of.fib.now();
        is.unicast = of.fib.entries<fib::unicast>().count();
        is.multicast = of.fib.entries<fib::multicast>().count();
        is.label = of.fib.entries<fib::label>().count();
    });
    return is;
}

std::vector<module_now> running_modules::now() const {
    std::vector<module_now> all;
    for (size_t index = 0; index < size(); index++) {
        all.push_back(now(index));
    }
    return all;
}

void running_modules::read(size_t index, const std::function<void(const fib::state &)> &read) const {
    if (running_[index] != nullptr) {
        running_[index]->read([&](const fib::module &of) { read(of.fib); });
    }
}

routes_in_hardware running_modules::compare(size_t index, const rib::state &wanted) const {
    routes_in_hardware is{.wanted = wanted_by_all(wanted)};
    read(index, [&](const fib::state &has) {
        const module_difference found = difference_between(wanted, has);
        is.right = is.wanted - found.missing - found.different;
        is.extra = found.extra;
    });
    return is;
}

std::string running_modules::hardware_text(const rib::state &wanted) const {
    std::string text;
    for (size_t index = 0; index < size(); index++) {
        const auto [all, right, extra] = compare(index, wanted);
        text += base::joined(text.empty() ? "  hardware  " : "\n            ", module_title(modules_[index]), " has ",
                             right, " of ", all, all == 1 ? " route" : " routes",
                             extra == 0 ? "" : base::joined(", and ", extra, " that it should not have"),
                             running_[index] == nullptr ? "; it is gone" : "");
    }
    return text;
}

bool wait_until(std::chrono::milliseconds limit, const std::function<bool()> &is_so) {
    constexpr uint32_t longest = 32; // milliseconds
    const auto end = bus::run_now() + limit;
    for (uint32_t pause = 1; !is_so(); pause = std::min(2 * pause, longest)) {
        if (bus::run_now() >= end) {
            return false;
        }
        qip_pause(pause);
    }
    return true;
}

} // namespace ribkit::lab
