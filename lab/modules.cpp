// Entries are compared by what they send where; what else they say is the module's own finding.
#include "lab/modules.h"

#include "base/printable.h"
#include "base/text.h"
#include "qip.h"
#include "ribkit_platform.h"

#include <algorithm>
#include <thread>

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

std::string module_title(const fabric_module &module) {
    return base::joined("module ", module.number,
                        module.name.empty() ? "" : base::joined(" (", base::printable(module.name), ')'));
}

module_difference difference_between(const rib::state &wanted, const fib::state &has) {
    module_difference found;
    compare<rib::unicast, fib::unicast>(wanted, has, found);
    compare<rib::multicast, fib::multicast>(wanted, has, found);
    compare<rib::label, fib::label>(wanted, has, found);
    return found;
}

running_modules::running_modules(std::vector<fabric_module> modules, const std::string &url, bool traces)
    : modules_(std::move(modules)) {
    for (const fabric_module &one : modules_) {
        fib::fib_options options;
        options.number = one.number;
        options.sizes = one.sizes;
        options.ports = fib::usual_ports(one.number, one.ports);
        options.slow = one.slow;
        options.trace = traces && running_.empty();
        running_.push_back(std::make_unique<fib::fib_service>(url, options));
    }
}

void running_modules::await_rib(std::chrono::milliseconds limit) const {
    wait_until(limit, [this] {
        return std::all_of(running_.begin(), running_.end(), [](const auto &one) {
            return one->read([](const fib::module &of) { return of.fib.now() != model::fib_state::offline; });
        });
    });
}

void running_modules::stop() {
    for (const auto &one : running_) {
        one->stop();
    }
}

std::string running_modules::hardware_text(const rib::state &wanted) const {
    std::string text;
    const size_t all = wanted_by_all(wanted);
    for (size_t i = 0; i < size(); i++) {
        const auto [found, entries] = running_[i]->read(
            [&](const fib::module &of) { return std::pair(difference_between(wanted, of.fib), of.fib.count()); });
        text += base::joined(text.empty() ? "  hardware  " : "\n            ", module_title(modules_[i]), " has ",
                             all - found.missing - found.different, " of ", all, all == 1 ? " route" : " routes");
        if (found.extra != 0) {
            text += base::joined(", and ", found.extra, " of ", entries, " that it should not have");
        }
    }
    return text;
}

// It sleeps outside of the message service, whose clock may be a virtual one.
bool wait_until(std::chrono::milliseconds limit, const std::function<bool()> &is_so) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!is_so()) {
        if (std::chrono::steady_clock::now() >= end) {
            return false;
        }
        qip_step_aside();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace ribkit::lab
