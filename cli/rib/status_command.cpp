// All is asked before anything is printed.
#include "cli/rib/status_command.h"

#include "base/text.h"
#include "cli/json_document.h"
#include "cli/rib/words.h"
#include "clients/question.h"
#include "clients/state_reader.h"
#include "clients/wire_agreement.h"
#include "diag/text/client_rows.h"
#include "protocol/fib/fib_records.h"
#include "protocol/uses.h"
#include "rib_codes.h"
#include "rib_text.h"

#include <algorithm>
#include <array>
#include <ctime>
#include <iomanip>
#include <iterator>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace ribkit::cli {

namespace {

constexpr uint32_t self = RIB_CLIENT_OPERATOR;
constexpr uint32_t availability = 1;
constexpr uint32_t first_queue = 3;
constexpr uint32_t last_queue = 8;

/// How often something was refused, and to whom that is known.
struct refusals {
    uint32_t result = 0;
    uint32_t count = 0;
    std::vector<std::pair<uint32_t, uint32_t>> clients{}; ///< client, and how often
};

struct status {
    model::availability role;
    uint32_t created = 0; ///< seconds since 1970
    model::vsan_summary sum;
    uint32_t vsans = 0, suspended = 0;
    std::vector<model::module_node> modules;
    std::vector<model::registration> clients;
    std::vector<std::pair<uint32_t, uint32_t>> queues; ///< structure, and how much waits there
    std::vector<refusals> refused;
};

void read_tables(bus::rib_link &link, status &now) {
    for (const clients::bytes &message : clients::read_databases(link, {self})) {
        const codec::view<wire::db_info> info(message.data());
        now.created = info.get<"created">();
        for (const model::vsan_summary &vsan : protocol::summaries_of(info)) {
            now.sum.unicast += vsan.unicast;
            now.sum.multicast += vsan.multicast;
            now.sum.label += vsan.label;
            now.sum.modified = std::max(now.sum.modified, vsan.modified);
        }
    }
    for (const clients::bytes &message : clients::read_vsans(link, {self})) {
        for (const auto &[vsan, known] : protocol::vsans_of(codec::view<wire::vsan_update>(message.data()))) {
            now.vsans++;
            now.suspended += known.state == model::vsan_state::suspended ? 1 : 0;
        }
    }
}

/// Of the clients that have names, or have registered.
std::vector<refusals> read_refusals(bus::rib_link &link, const std::vector<model::registration> &registered) {
    std::set<uint32_t> known;
    std::transform(std::begin(diag::client_rows), std::end(diag::client_rows), std::inserter(known, known.end()),
                   [](const diag::text_row &row) { return row.value; });
    std::transform(registered.begin(), registered.end(), std::inserter(known, known.end()),
                   [](const model::registration &client) { return client.client; });
    std::vector<refusals> all;
    for (const diag::text_row &row : diag::result_rows) {
        const uint32_t count = row.value == RIB_OK ? 0 : clients::read_refusals(link, self, row.value, 0);
        if (count == 0) {
            continue;
        }
        all.push_back({row.value, count});
        for (const uint32_t client : known) {
            const uint32_t of_client = clients::read_refusals(link, self, row.value, client);
            if (of_client != 0) {
                all.back().clients.emplace_back(client, of_client);
            }
        }
    }
    return all;
}

status read_status(bus::rib_link &link) {
    status now;
    const auto role = clients::read_structure(link, self, availability);
    now.role = protocol::availability_of(codec::view<wire::in_info>(role.data()));
    read_tables(link, now);
    const auto clients = clients::read_registrations(link, self);
    now.clients = protocol::registrations_of(codec::view<wire::reg_info>(clients.data()));
    const auto modules = clients::read_modules(link, self);
    now.modules = protocol::modules_of(codec::view<wire::sys_info>(modules.data()));
    for (uint32_t queue = first_queue; queue <= last_queue; queue++) {
        const auto waiting = clients::read_structure(link, self, queue);
        now.queues.emplace_back(
            queue, codec::view<wire::in_info>(waiting.data()).get<protocol::use<wire::in_info, "count">>());
    }
    now.refused = read_refusals(link, now.clients);
    return now;
}

/// What a converter of texts makes of a number.
template <class Convert> std::string text_by(Convert convert, uint32_t number) {
    std::array<char, 64> text{};
    convert(number, text.data());
    return text.data();
}

std::string time_text(uint32_t seconds) {
    const time_t time = seconds;
    std::array<char, 64> text{};
    rib_time_to_str(&time, text.data());
    return text.data();
}

std::string state_text(const model::module_node &module) {
    return text_by(fib_state_to_str, static_cast<uint32_t>(module.state));
}

std::string start_text(const model::availability &role) {
    return role.started_stateful ? "with a peer's tables" : "with empty tables";
}

void print_line(command_output &out, const char *what, const std::string &text) {
    out.print_line(base::joined("  ", std::left, std::setw(10), what, text));
}

void print_text(command_output &out, const std::string &url, const status &now) {
    out.print_line("the RIB at " + url);
    print_line(out, "role", text_by(rib_sup_state_to_str, now.role.sup_state) + ", started " + start_text(now.role));
    print_line(out, "since", time_text(now.created));
    print_line(out, "routes",
               base::joined(now.sum.unicast, " unicast, ", now.sum.multicast, " multicast, ", now.sum.label, " label"));
    if (now.sum.modified != 0) {
        print_line(out, "changed", time_text(now.sum.modified));
    }
    print_line(out, "VSANs", base::joined(now.vsans, ", ", now.suspended, " suspended"));
    print_line(out, "modules", base::joined(now.modules.size()));
    for (const model::module_node &module : now.modules) {
        print_line(out, "module",
                   base::joined(module.number, " ", state_text(module), ", ", module.ports.size(), " ports"));
    }
    for (const model::registration &client : now.clients) {
        print_line(out, "client",
                   base::joined(client.client, " ", client_text(client.client), ", distance ", client.distance, ", ",
                                client.name));
    }
    std::string queues;
    for (const auto &[queue, waiting] : now.queues) {
        queues += base::joined(queues.empty() ? "" : ", ", text_by(rib_in_to_str, queue), " ", waiting);
    }
    print_line(out, "waiting", queues);
    for (const refusals &one : now.refused) {
        std::string clients;
        for (const auto &[client, count] : one.clients) {
            clients += base::joined(clients.empty() ? ": " : ", ", client_text(client), " ", count);
        }
        print_line(out, "refused", base::joined(one.count, " ", bus::result_text(one.result), clients));
    }
}

void print_json(command_output &out, const std::string &url, const status &now) {
    if (!out.wants_json()) {
        return;
    }
    json_document document(out);
    decode::json_text &json = document.text();
    json.object([&] {
        json.member("bus").text(url);
        json.member("role").text(text_by(rib_sup_state_to_str, now.role.sup_state));
        json.member("started_stateful").truth(now.role.started_stateful);
        json.member("created").number(now.created);
        json.member("changed").number(now.sum.modified);
        json.member("unicast").number(now.sum.unicast);
        json.member("multicast").number(now.sum.multicast);
        json.member("label").number(now.sum.label);
        json.member("vsans").number(now.vsans);
        json.member("suspended").number(now.suspended);
        json.member("modules").list(now.modules, [&](const model::module_node &module) {
            json.object([&] {
                json.member("module").number(module.number);
                json.member("state").text(state_text(module));
                json.member("ports").number(module.ports.size());
            });
        });
        json.member("clients").list(now.clients, [&](const model::registration &client) {
            json.object([&] {
                json.member("client").number(client.client);
                json.member("distance").number(client.distance);
                json.member("name").text(client.name);
            });
        });
        json.member("refused").list(now.refused, [&](const refusals &one) {
            json.object([&] {
                json.member("result").number(one.result);
                json.member("text").text(bus::result_text(one.result));
                json.member("count").number(one.count);
                json.member("clients").list(one.clients, [&](const auto &client) {
                    json.object([&] {
                        json.member("client").number(client.first);
                        json.member("count").number(client.second);
                    });
                });
            });
        });
        json.member("waiting").object([&] {
            for (const auto &one : now.queues) {
                json.member(text_by(rib_in_to_str, one.first).c_str()).number(one.second);
            }
        });
    });
    document.finish();
}

} // namespace

int run_status(const status_options &options) {
    load_faults(options.bus);
    command_output out(options.output, {options.bus.faults_file});
    bus::rib_link link(options.bus.url, self, {options.envelopes, options.bus.patience()});
    clients::find_rib(link);
    const status now = clients::patiently(link, [&] { return read_status(link); });
    print_text(out, link.shown_url(), now);
    print_json(out, link.shown_url(), now);
    out.finish();
    return 0;
}

} // namespace ribkit::cli
