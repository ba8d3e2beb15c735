// Each route travels in an update of its own, so that its answer is known to be its.
#include "cli/rib/route_command.h"

#include "base/input_error.h"
#include "base/input_file.h"
#include "base/near_names.h"
#include "base/text.h"
#include "cli/json_document.h"
#include "cli/rib/route_records.h"
#include "cli/rib/show_running.h"
#include "cli/rib/shown_kinds.h"
#include "clients/question.h"
#include "clients/wire_agreement.h"
#include "protocol/route_messages.h"
#include "rib_codes.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace ribkit::cli {

namespace {

struct placed_request {
    std::string place; ///< "FILE:LINE: "; empty on the command line
    size_t line;       ///< of the file, from 1; 0 on the command line
    route_request request;
    protocol::fcurt_response answer{};
};

std::vector<placed_request> read_file(const route_command_options &options) {
    const std::string title = base::input_title(options.words.where);
    const std::string content = base::read_input(options.words.where);
    std::vector<placed_request> all;
    size_t number = 0;
    for (size_t at = 0; at < content.size();) {
        const size_t end = std::min(content.find('\n', at), content.size());
        const std::string line = content.substr(at, end - at);
        at = end + 1;
        number++;
        const size_t first = line.find_first_not_of(" \t\r");
        if (first == std::string::npos || line[first] == '#') {
            continue;
        }
        const std::string place = base::joined(title, ':', number, ": ");
        try {
            const route_words words = options.read_line(line);
            if (words.action != "add" && words.action != "del") {
                throw base::input_error(base::joined('"', words.action, "\": a line begins with add or del"));
            }
            all.push_back({place, number, request_of(words)});
        } catch (const base::input_error &why) {
            throw base::input_error(place + why.what());
        }
    }
    return all;
}

/// A request of which the answer was lost may have taken effect.
protocol::fcurt_response send(bus::rib_link &link, const route_request &request) {
    bool again = false;
    auto message = update_of(request, RIB_CLIENT_CONFIG);
    return clients::patiently(link, [&] {
        const bool repeated = std::exchange(again, true);
        auto answer = clients::ask_for_result(link, opcode_of(request), message);
        if (repeated && request.deletes && answer.result == RIB_NO_ENTRY) {
            answer.result = RIB_OK;
        }
        return answer;
    });
}

void print_json(command_output &out, const std::vector<placed_request> &all) {
    if (!out.wants_json()) {
        return;
    }
    json_document document(out);
    decode::json_text &json = document.text();
    json.list(all, [&](const placed_request &one) {
        json.object([&] {
            if (one.line != 0) {
                json.member("line").number(one.line);
            }
            json.member("action").text(one.request.deletes ? "del" : "add");
            json.member("route").text(text_of(one.request));
            json.member("result").number(one.answer.result);
            json.member("text").text(bus::result_text(one.answer.result));
            json.member("held").number(one.answer.held);
        });
    });
    document.finish();
}

void print_answer(command_output &out, const placed_request &one) {
    if (one.answer.result != RIB_OK) {
        std::fprintf(stderr, "ribkit: %s%s: %s\n", one.place.c_str(), text_of(one.request).c_str(),
                     bus::result_text(one.answer.result).c_str());
    } else if (one.place.empty()) {
        out.print_line(base::joined(text_of(one.request), one.request.deletes ? ": deleted" : ": added",
                                    "; the RIB holds ", one.answer.held, one.answer.held == 1 ? " route" : " routes",
                                    " of this VSAN's table"));
    }
}

void print_sum(command_output &out, const std::vector<placed_request> &all) {
    const auto count = [&](auto fits) { return std::count_if(all.begin(), all.end(), fits); };
    const auto refused = count([](const placed_request &one) { return one.answer.result != RIB_OK; });
    const auto deleted =
        count([](const placed_request &one) { return one.request.deletes && one.answer.result == RIB_OK; });
    out.print_line(base::joined(all.size() - static_cast<size_t>(refused + deleted), " added, ", deleted, " deleted, ",
                                refused, " refused"));
}

int change(const route_command_options &options, bus::rib_link &link, command_output &out,
           std::vector<placed_request> &all) {
    for (placed_request &one : all) {
        one.answer = send(link, one.request);
        print_answer(out, one);
    }
    if (options.words.action == "load") {
        print_sum(out, all);
    }
    print_json(out, all);
    out.finish();
    const bool good = std::all_of(all.begin(), all.end(), [](const auto &one) { return one.answer.result == RIB_OK; });
    return good ? 0 : 1;
}

/// The routes of a key, whoever owns them.
template <class Table> record_list read_key(bus::rib_link &link, const route_of_table<Table> &route) {
    record_list all;
    clients::table_reading<Table> wanted{RIB_CLIENT_OPERATOR};
    wanted.key = route.key;
    clients::read_table<Table>(
        link, wanted, [&](uint32_t owner, const auto &key, const auto &what) { add_record(all, owner, key, what); });
    return all;
}

record_list find(bus::rib_link &link, const route_request &request) {
    if (const auto *unicast = std::get_if<route_of_table<clients::unicast_table>>(&request.route);
        unicast != nullptr && !request.has_mask) {
        return find_shown_kind("fcu")->read(link, {unicast->key.vsan, address{unicast->key.to.fcid, {}}, {}, {}});
    }
    return std::visit([&](const auto &route) { return read_key(link, route); }, request.route);
}

int get(const route_request &request, bus::rib_link &link, command_output &out) {
    static constexpr const char *displays_of_tables[] = {"fcu", "fcm", "fcl"};
    const display &kind = *find_display(displays_of_tables[request.route.index()]);
    const record_list found = clients::patiently(link, [&] { return find(link, request); });
    print_records(out, kind, found);
    print_records_json(out, kind.message, found);
    out.finish();
    if (found.empty()) {
        std::fprintf(stderr, "ribkit: %s: the RIB at %s holds none\n", text_of(request).c_str(),
                     link.shown_url().c_str());
    }
    return found.empty() ? 1 : 0;
}

} // namespace

int run_route(const route_command_options &options) {
    const std::vector<std::string_view> actions(route_actions.begin(), route_actions.end());
    const std::string &action = options.words.action;
    if (std::find(actions.begin(), actions.end(), action) == actions.end()) {
        throw base::input_error(base::no_such_name(action, "action", actions, "ribkit route --help"));
    }
    std::vector<placed_request> all;
    if (action != "load") {
        all.push_back({"", 0, request_of(options.words)});
    } else if (options.words.where.empty()) {
        throw base::input_error("ribkit route load: FILE is required, - for standard input");
    } else {
        all = read_file(options);
    }
    load_faults(options.bus);
    command_output out(options.output, {options.bus.faults_file, action == "load" ? options.words.where : ""});
    const uint32_t client = action == "get" ? RIB_CLIENT_OPERATOR : RIB_CLIENT_CONFIG;
    bus::rib_link link(options.bus.url, client, {options.envelopes, options.bus.patience()});
    clients::find_rib(link);
    return action == "get" ? get(all.front().request, link, out) : change(options, link, out, all);
}

} // namespace ribkit::cli
