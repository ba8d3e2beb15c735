// The three shapes.
#include "lab/generator/drawn_links.h"

#include "base/text.h"
#include "lab/fabric.h"

#include <algorithm>
#include <utility>

namespace ribkit::lab {

namespace {

constexpr uint32_t ports_of_module = 48;
constexpr uint32_t core_cost = 250;

} // namespace

drawn_links::drawn_links(const fabric_plan &plan, draw &chance)
    : plan_(plan), chance_(chance), ports_(plan.switches, 0) {
    if (plan_.shape == fabric_shape::core_edge) {
        connect_cores_and_edges();
    } else {
        connect_ring();
    }
    if (plan_.shape == fabric_shape::mesh) {
        connect_across();
    }
}

void drawn_links::connect_cores_and_edges() {
    const uint32_t pairs = 1 + plan_.switches / 64;
    cores_ = std::min(2 * pairs, plan_.switches - 1);
    for (uint32_t a = 0; a < cores_; a++) {
        for (uint32_t b = a + 1; b < cores_; b++) {
            join(a, b, core_cost);
        }
    }
    for (uint32_t edge = cores_; edge < plan_.switches; edge++) {
        const uint32_t core = 2 * chance_.below(pairs);
        for (uint32_t i = core; i < std::min(core + 2, cores_); i++) {
            join(edge, i, default_cost);
        }
    }
    local_ = cores_ + chance_.below(plan_.switches - cores_);
}

void drawn_links::connect_ring() {
    for (uint32_t i = 0; i < plan_.switches; i++) {
        join(i, (i + 1) % plan_.switches, default_cost);
    }
    local_ = chance_.below(plan_.switches);
}

void drawn_links::connect_across() {
    constexpr uint32_t costs[] = {250, 500, 1000};
    for (uint32_t i = 0; i < 2 * plan_.switches; i++) {
        const uint32_t from = chance_.below(plan_.switches);
        const uint32_t to = (from + 1 + chance_.below(plan_.switches - 1)) % plan_.switches;
        join(from, to, costs[chance_.below(3)]);
    }
}

void drawn_links::join(uint32_t a, uint32_t b, uint32_t cost) {
    drawn_end first = next_port(a);
    links_.push_back({std::move(first), next_port(b), cost});
}

drawn_end drawn_links::next_port(uint32_t owner) {
    const uint32_t port = ports_[owner]++;
    return {owner, base::joined("fc", 1 + port / ports_of_module, '/', 1 + port % ports_of_module)};
}

std::vector<drawn_end> drawn_links::ends_of(uint32_t owner) const {
    std::vector<drawn_end> ends;
    for (const drawn_link &l : links_) {
        for (const drawn_end *one : {&l.a, &l.b}) {
            if (one->owner == owner) {
                ends.push_back(*one);
            }
        }
    }
    return ends;
}

std::string drawn_links::name_of(size_t index) const {
    if (plan_.shape != fabric_shape::core_edge) {
        return base::joined("switch-", index + 1);
    }
    return index < cores_ ? base::joined("core-", index + 1) : base::joined("edge-", index + 1 - cores_);
}

std::string drawn_links::text(const drawn_end &one) const {
    return base::joined('"', name_of(one.owner), ' ', one.port, '"');
}

} // namespace ribkit::lab
