// All records are read before the first is shown: an answer that does not come makes reading begin again.
#include "cli/rib/show_running.h"

#include "base/input_error.h"
#include "base/text.h"
#include "cli/json_document.h"
#include "cli/messages/message_kinds.h"
#include "cli/rib/shown_kinds.h"
#include "clients/question.h"
#include "decode/decoder.h"
#include "rib_codes.h"

#include <vector>

namespace ribkit::cli {

namespace {

/// Throws where an option is given that the display's records know nothing of.
void refuse_useless(const shown_kind &row, const filter_options &given) {
    const auto refuse = [&](bool tells, const std::string &value, const char *option) {
        if (!tells && !value.empty()) {
            throw base::input_error(base::joined(option, ": the display ", row.display, " cannot be chosen by it"));
        }
    };
    refuse(row.filters.vsan, given.vsan, "--vsan");
    refuse(row.filters.to, given.fcid, "--fcid");
    refuse(row.filters.via, given.via, "--via");
    refuse(row.filters.owner, given.owner, "--owner");
}

record_filter filter_of(const filter_options &given) {
    record_filter filter;
    if (!given.vsan.empty()) {
        filter.vsan = number_in(given.vsan, "VSAN", RIB_LAST_VSAN);
    }
    if (!given.fcid.empty()) {
        filter.to = address_in(given.fcid);
    }
    if (!given.via.empty()) {
        filter.via = interface_in(given.via);
    }
    if (!given.owner.empty()) {
        filter.owner = client_in(given.owner);
    }
    return filter;
}

} // namespace

void print_records(command_output &out, const display &kind, const record_list &records) {
    out.display([&] {
        uint32_t header = 1;
        for (size_t i = 0; i < records.size(); i++) {
            kind.show(&header, records[i].data());
        }
    });
}

void print_records_json(command_output &out, std::string_view message, const record_list &records) {
    if (!out.wants_json()) {
        return;
    }
    decode::output pieces([&out](std::string_view piece) { out.print_json(piece); });
    decode::json_writer json(pieces, decode::json_form::array);
    decode::decoder messages(kind_named(std::string(message)), nullptr, nullptr, &json);
    for (size_t i = 0; i < records.size(); i++) {
        messages.take(records[i], false);
    }
    json.finish();
    pieces.flush();
}

int run_show_running(const display &kind, const show_running_options &options, const output_options &output) {
    const shown_kind &row = *find_shown_kind(kind.short_name());
    refuse_useless(row, options.filter);
    const record_filter wanted = filter_of(options.filter);
    load_faults(options.bus);
    command_output out(output, {options.bus.faults_file});
    bus::rib_link link(options.bus.url, RIB_CLIENT_OPERATOR, {options.envelopes, options.bus.patience()});
    link.find();
    const record_list records = clients::patiently(link, [&] { return row.read(link, wanted); });
    print_records(out, kind, records);
    if (records.empty()) {
        out.print_line("nothing to show");
    }
    print_records_json(out, kind.message, records);
    out.finish();
    return 0;
}

} // namespace ribkit::cli
