// Where there are links only, links fail and come back. Else everything has its turn: routes are added, changed and
// withdrawn, members join and leave, and clients become nearer or farther.
#include "lab/generator/drawn_routes.h"

#include "base/text.h"
#include "lab/fabric.h"
#include "rib_codes.h"

#include <array>
#include <utility>

namespace ribkit::lab {

namespace {

std::string at(uint32_t second) { return base::joined("\n[[event]]\nat = \"", second, "s\"\n"); }
std::string state(bool up) { return base::joined("state = \"", up ? "up" : "down", "\"\n"); }

} // namespace

uint32_t drawn_routes::drawn_switch(uint32_t turn) {
    return turn % 2 == 0 ? links_.local() : chance_.below(plan_.switches);
}

/// The head of a declared route, in any VSAN.
drawn_routes::declared drawn_routes::head(std::string &text, const char *table, uint32_t turn) {
    declared one{base::joined(table, '-', turn + 1), plan_.events == 0 || turn % 3 != 2};
    text += base::joined("\n[[", table, "]]\nname = \"", one.name, "\"\nvsan = ", 1 + chance_.below(plan_.vsans), '\n',
                         one.up ? "" : state(false));
    return one;
}

void drawn_routes::add_statics(std::string &text) {
    for (uint32_t i = 0; i < plan_.statics; i++) {
        const std::vector<drawn_end> ways = links_.ends_of(drawn_switch(i));
        statics_.push_back(head(text, "static", i));
        const uint32_t fcid = (1 + chance_.below(RIB_LAST_DOMAIN)) << 16 | i;
        text += base::joined("fcid = ", fcid, "\nmask = ", RIB_MASK_PORT, "\nvia = ", links_.text(chance_.one_of(ways)),
                             '\n');
    }
}

void drawn_routes::add_groups(std::string &text) {
    constexpr uint32_t first_group = 0xfffb00;
    for (uint32_t i = 0; i < plan_.groups; i++) {
        declared_group one{head(text, "group", i), {}};
        one.members.push_back(links_.text(links_.next_port(drawn_switch(i))));
        for (uint32_t more = 1 + chance_.below(3); more > 0; more--) {
            one.members.push_back(links_.text(links_.next_port(chance_.below(plan_.switches))));
        }
        text += base::joined("fcid = ", first_group + i, "\nmembers = [", one.members[0]);
        for (size_t member = 1; member < one.members.size(); member++) {
            text += base::joined(", ", one.members[member]);
        }
        text += "]\n";
        groups_.push_back(std::move(one));
    }
}

void drawn_routes::add_labels(std::string &text) {
    constexpr uint32_t first_label = 16;
    for (uint32_t i = 0; i < plan_.labels; i++) {
        labels_.push_back(head(text, "label", i));
        const std::string from = links_.text(links_.next_port(drawn_switch(i)));
        const std::string to = links_.text(links_.next_port(chance_.below(plan_.switches)));
        text += base::joined("tunnel = [", from, ", ", to, "]\nlabel = ", first_label + i, '\n');
    }
}

std::string drawn_routes::declarations() {
    std::string text;
    add_statics(text);
    add_groups(text);
    add_labels(text);
    return text;
}

/// It is withdrawn, or added again.
std::string drawn_routes::turned(const char *table, declared &one) {
    one.up = !one.up;
    return base::joined(table, " = \"", one.name, "\"\n", state(one.up));
}

std::string drawn_routes::static_event() {
    declared &one = statics_[chance_.below(plan_.statics)];
    if (chance_.below(2) == 0) {
        return turned("static", one);
    }
    return base::joined("static = \"", one.name, "\"\ncost = ", 1 + chance_.below(50), '\n');
}

// The last member stays.
std::string drawn_routes::group_event() {
    declared_group &one = groups_[chance_.below(plan_.groups)];
    const uint32_t what = chance_.below(3);
    if (what == 0) {
        return turned("group", one);
    }
    std::string text = base::joined("group = \"", one.name, "\"\n");
    if (what == 1 && one.members.size() > 1) {
        const auto leaving = one.members.begin() + chance_.below(static_cast<uint32_t>(one.members.size()));
        text += base::joined("leave = ", *leaving, '\n');
        one.members.erase(leaving);
        return text;
    }
    one.members.push_back(links_.text(links_.next_port(chance_.below(plan_.switches))));
    return base::joined(text, "join = ", one.members.back(), '\n');
}

std::string drawn_routes::label_event() {
    declared &one = labels_[chance_.below(plan_.labels)];
    if (chance_.below(2) == 0) {
        return turned("label", one);
    }
    const drawn_end to = links_.next_port(chance_.below(plan_.switches));
    return base::joined("label = \"", one.name, "\"\nto = ", links_.text(to), '\n');
}

std::string drawn_routes::distance_event() {
    constexpr std::array<const char *, 3> clients{"fspf", "rib-config", "fcdomain"};
    const char *client = chance_.one_of(clients);
    return base::joined("client = \"", client, "\"\ndistance = ", chance_.below(256), '\n');
}

/// What happens at two moments.
std::string drawn_routes::happening(uint32_t turn) {
    using event = std::string (drawn_routes::*)();
    std::vector<event> kinds{nullptr};
    const auto add = [&](const auto &there, event kind) {
        if (!there.empty()) {
            kinds.push_back(kind);
        }
    };
    add(statics_, &drawn_routes::static_event);
    add(statics_, &drawn_routes::distance_event);
    add(groups_, &drawn_routes::group_event);
    add(labels_, &drawn_routes::label_event);
    const event kind = kinds.size() == 1 ? nullptr : chance_.one_of(kinds);
    const uint32_t first = 2 * turn + 1;
    if (kind == nullptr) {
        const std::string failing = base::joined("link = ", links_.text(chance_.one_of(links_.all()).a), '\n');
        return base::joined(at(first), failing, state(false), at(first + 1), failing, state(true));
    }
    std::string one = (this->*kind)();
    return base::joined(at(first), one, at(first + 1), (this->*kind)());
}

std::string drawn_routes::events() {
    std::string text;
    for (uint32_t turn = 0; turn < plan_.events; turn++) {
        text += happening(turn);
    }
    return text;
}

} // namespace ribkit::lab
