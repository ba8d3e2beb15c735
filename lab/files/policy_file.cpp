// Clients are named as the displays name them, or numbered; a mistake is named by its line.
#include "lab/files/policy_file.h"

#include "base/near_names.h"
#include "base/text.h"
#include "diag/text/client_rows.h"
#include "lab/files/table_reader.h"

#include <algorithm>
#include <cctype>
#include <iterator>

using namespace ribkit::diag;

namespace ribkit::lab {

namespace {

std::string no_such_client(const std::string &name) {
    std::vector<std::string_view> names;
    std::transform(std::begin(client_rows), std::end(client_rows), std::back_inserter(names),
                   [](const text_row &row) { return row.text; });
    return base::no_such_name(name, "client", names, "ribkit text rib_uuid");
}

uint32_t client_of(const name_or_number &client, uint32_t line) {
    if (client.number) {
        return *client.number;
    }
    const auto found = std::find_if(std::begin(client_rows), std::end(client_rows),
                                    [&](const text_row &row) { return client.name == row.text; });
    if (found == std::end(client_rows)) {
        throw base::line_error(line, no_such_client(client.name));
    }
    return found->value;
}

// As a server's subjects have them.
bool is_sender_name(const std::string &name) {
    return !name.empty() && std::all_of(name.begin(), name.end(),
                                        [](unsigned char c) { return std::isalnum(c) != 0 || c == '-' || c == '_'; });
}

void read_quota(rib::rib_policy &policy, const table_reader &table) {
    const uint32_t client = read_client(table, "client");
    if (!policy.quotas.emplace(client, table.number("routes")).second) {
        throw base::line_error(table.line("client"), base::joined("client ", client, " has a quota already"));
    }
}

void read_who(rib::rib_policy &policy, const table_reader &table) {
    const std::string name = table.text("name");
    if (!is_sender_name(name)) {
        throw base::line_error(
            table.line("name"),
            base::joined('"', name, "\" is no NAME of a sender: letters, digits, '-' and '_' make one"));
    }
    std::set<uint32_t> clients;
    for (const name_or_number &client : table.eithers("clients")) {
        clients.insert(client_of(client, table.line("clients")));
    }
    if (!policy.who.emplace(name, std::move(clients)).second) {
        throw base::line_error(table.line("name"), base::joined("\"", name, "\" is already there"));
    }
}

} // namespace

uint32_t read_client(const table_reader &table, std::string_view key) {
    return client_of(table.either(key), table.line(key));
}

rib::rib_policy read_policy(const table_reader &top) {
    rib::rib_policy policy;
    top.each("quota", {"client", "routes"}, [&](const table_reader &table) { read_quota(policy, table); });
    top.each("who", {"name", "clients"}, [&](const table_reader &table) { read_who(policy, table); });
    return policy;
}

} // namespace ribkit::lab
