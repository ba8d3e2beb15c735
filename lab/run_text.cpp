// Short lines, made of counts with their nouns.
#include "lab/run_text.h"

#include "base/printable.h"
#include "base/text.h"
#include "rib_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iomanip>
#include <set>

namespace ribkit::lab {

namespace {

constexpr size_t few_vsans = 4;
constexpr size_t few_unreachable = 3;

std::string counted(size_t count, const std::string &one, const std::string &many = "") {
    return base::joined(count, ' ', count == 1 ? one : many.empty() ? one + "s" : many);
}

std::string vsans_text(const fabric &f) {
    if (f.vsans().size() > few_vsans) {
        return counted(f.vsans().size(), "VSAN");
    }
    std::string text;
    for (const auto &[id, name, is] : f.vsans()) {
        text += base::joined(text.empty() ? "VSAN " : ", ", id,
                             name.empty() ? "" : base::joined(" (", base::printable(name), ')'));
    }
    return text;
}

std::string domain_text(const fabric &f, uint32_t domain) {
    const auto found = std::find_if(f.switches().begin(), f.switches().end(),
                                    [&](const fabric_switch &one) { return one.domain == domain; });
    return base::joined("domain ", domain, " (", found->name, ')');
}

// In every VSAN the same domains, but where it says "some".
std::string unreachable_count(const fabric &f, const std::vector<unreachable_domains> &lost) {
    std::set<uint32_t> domains;
    size_t pairs = 0;
    for (const unreachable_domains &in_vsan : lost) {
        domains.insert(in_vsan.domains.begin(), in_vsan.domains.end());
        pairs += in_vsan.domains.size();
    }
    return base::joined(domains.size() == 1 ? domain_text(f, *domains.begin()) + " is"
                                            : base::joined(domains.size(), " domains are"),
                        " unreachable in ", pairs == domains.size() * lost.size() ? "" : "some of ",
                        lost.size() == 1 ? base::joined("VSAN ", lost[0].vsan) : counted(lost.size(), "VSAN"));
}

std::string memory_text(const rib::rib_memory &m) {
    return base::joined(counted(m.routes, "route"), ", ", m.path_units, " of ", m.spaces.path_units, " path units, ",
                        m.positions, " of ", m.spaces.positions, " hardware positions");
}

std::string seconds_text(double seconds) { return base::joined(std::fixed, std::setprecision(6), seconds); }

std::string client_text(uint32_t client) {
    std::array<char, 64> text{};
    rib_uuid_to_str(client, text.data());
    return text.data();
}

/// For what there is room, of what is said.
std::string room_text(const module_room &room) {
    std::string text;
    const auto add = [&](std::optional<uint32_t> count, const char *what) {
        text += count ? base::joined(text.empty() ? ", with room for " : ", ", *count, ' ', what) : "";
    };
    add(room.unicast, "unicast");
    add(room.multicast, "multicast");
    add(room.label, "label");
    const std::string tables = text.empty() ? "" : text + " entries";
    return tables + (room.per_vsan ? base::joined(", ", *room.per_vsan, " of a VSAN at most") : "");
}

std::string turn_text(const fabric &f, const fabric_event &event) {
    constexpr std::array<const char *, module_turn_names.size()> words{" comes up", " goes down", " is upgrading",
                                                                       " starts again"};
    return base::joined(module_title(f.modules[event.index]), words[static_cast<size_t>(event.turn)],
                        room_text(event.room));
}

/// What else becomes of a link, or of what is declared.
std::string changes_text(const fabric &f, const fabric_event &event, const char *comes, const char *goes) {
    std::string text = event.up ? (*event.up ? comes : goes) : "";
    text += event.cost ? base::joined(event.up ? " and" : "", " costs ", *event.cost) : "";
    text += event.leaves ? base::joined(": ", f.port_text(*event.leaves), " leaves") : "";
    text += event.joins ? base::joined(event.leaves ? ", " : ": ", f.port_text(*event.joins), " joins") : "";
    text += event.to ? base::joined(event.up ? " and" : "", " ends at ", f.port_text(*event.to)) : "";
    return text;
}

std::string declared_text(const fabric &f, const fabric_event &event, const char *what, const std::string &name) {
    return base::joined(what, ' ', base::printable(name), changes_text(f, event, " is added", " is withdrawn"));
}

} // namespace

std::string head_text(const fabric &f) {
    return base::joined(base::printable(f.name), ": ", counted(f.switches().size(), "switch", "switches"), ", ",
                        counted(f.links().size(), "link"), "; routes of ", f.local().name, " (domain ",
                        f.local().domain, ") in ", vsans_text(f));
}

std::string event_text(const fabric &f, const fabric_event &event) {
    switch (event.subject) {
    case event_subject::link:
        return f.link_name(f.links()[event.index]) + changes_text(f, event, " comes up", " goes down");
    case event_subject::static_route:
        return declared_text(f, event, "static route", f.declared.statics()[event.index].name);
    case event_subject::group:
        return declared_text(f, event, "group", f.declared.groups()[event.index].name);
    case event_subject::label:
        return declared_text(f, event, "label route", f.declared.labels()[event.index].name);
    case event_subject::module:
        return turn_text(f, event);
    case event_subject::distance:
        break;
    }
    return base::joined(client_text(static_cast<uint32_t>(event.index)), " has the distance ", event.cost.value_or(0));
}

std::string module_title(const fabric_module &module) {
    return base::joined("module ", module.number,
                        module.name.empty() ? "" : base::joined(" (", base::printable(module.name), ')'));
}

std::string module_text(const fabric_module &about, const module_now &is) {
    return base::joined(module_title(about), " has ", is.entries(), is.entries() == 1 ? " entry" : " entries");
}

std::string traffic_text(const clients::client_traffic &traffic) {
    std::string text;
    const auto add = [&](size_t count, const char *what) {
        if (count != 0) {
            text +=
                text.empty() ? base::joined(counted(count, "route"), ' ', what) : base::joined(", ", count, ' ', what);
        }
    };
    add(traffic.merged, "merged");
    add(traffic.added, "added");
    add(traffic.deleted, "deleted");
    add(traffic.changed, "changed");
    add(traffic.refused, "refused");
    return text.empty() ? "no route changed" : base::joined(text, ", in ", counted(traffic.messages, "message"));
}

std::string unreachable_text(const fabric &f, const std::vector<unreachable_domains> &lost) {
    std::string text;
    size_t lines = 0;
    for (const auto &[vsan, domains] : lost) {
        for (const uint32_t domain : domains) {
            if (++lines > few_unreachable) {
                return "  " + unreachable_count(f, lost);
            }
            text +=
                base::joined(text.empty() ? "" : "\n", "  ", domain_text(f, domain), " is unreachable in VSAN ", vsan);
        }
    }
    return text;
}

std::string summary_text(const run_record &run, const rib::rib_state *rib) {
    const clients::client_traffic &t = run.total;
    return base::joined("Summary\n  routes    ", t.sent(), " sent: ", t.added, " added, ", t.deleted, " deleted, ",
                        t.changed, " changed", t.merged == 0 ? "" : base::joined(", ", t.merged, " merged"),
                        rib == nullptr ? "" : base::joined("; the RIB holds ", rib->held()),
                        t.refused == 0 ? "" : base::joined("\n  refused   ", t.refused, " of the routes sent"),
                        "\n  messages  ", t.messages, " sent and answered: ", t.bytes_sent, " bytes there, ",
                        t.bytes_received, " back",
                        rib == nullptr ? "" : base::joined("\n  memory    ", memory_text(rib->memory)),
                        "\n  seconds   ", seconds_text(run.seconds()), ": ", seconds_text(t.computing.count()),
                        " computing paths, ", seconds_text(t.exchanging.count()), " exchanging messages\n  rate      ",
                        std::llround(run.routes_per_second()), " routes a second");
}

std::string summary_text(const rib::rib_state &rib) {
    return base::joined("Summary\n  messages  ", rib.answered, " answered\n  memory    ", memory_text(rib.memory));
}

} // namespace ribkit::lab
