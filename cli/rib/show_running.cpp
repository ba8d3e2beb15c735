// All records are read before the first is shown: an answer that does not come makes reading begin again.
#include "cli/rib/show_running.h"

#include "base/input_error.h"
#include "base/text.h"
#include "cli/json_document.h"
#include "cli/messages/message_kinds.h"
#include "cli/rib/module_kinds.h"
#include "cli/rib/shown_kinds.h"
#include "clients/question.h"
#include "clients/wire_agreement.h"
#include "decode/decoder.h"
#include "rib_codes.h"

#include <vector>

namespace ribkit::cli {

namespace {

/// Throws where an option is given that the display's records know nothing of.
/// @param row a shown_kind or a module_kind
template <class Row> void refuse_useless(const Row &row, const filter_options &given) {
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

record_list ask_rib(const shown_kind &row, const show_running_options &options) {
    refuse_useless(row, options.filter);
    const record_filter wanted = filter_of(options.filter);
    load_faults(options.bus);
    bus::rib_link link(options.bus.url, RIB_CLIENT_OPERATOR, {options.envelopes, options.bus.patience()});
    clients::find_rib(link);
    return clients::patiently(link, [&] { return row.read(link, wanted); });
}

/// @param row null where modules have no such display
record_list ask_module(const module_kind *row, const show_running_options &options) {
    if (row == nullptr) {
        throw base::input_error(
            "--module: modules have fcu, fcm, fcl, verf_fcu, verf_fcm, verf_fcl, vsan, port and node");
    }
    refuse_useless(*row, options.filter);
    const record_filter wanted = filter_of(options.filter);
    load_faults(options.bus);
    clients::compare_formats_of_modules(options.bus.url, options.bus.patience());
    bus::module_link link(options.bus.url, options.module, options.bus.patience());
    return row->read(link, wanted);
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
    command_output out(output, {options.bus.faults_file});
    const record_list records = options.module == 0 ? ask_rib(*find_shown_kind(kind.short_name()), options)
                                                    : ask_module(find_module_kind(kind.short_name()), options);
    print_records(out, kind, records);
    if (records.empty()) {
        out.print_line("nothing to show");
    }
    print_records_json(out, kind.message, records);
    out.finish();
    return 0;
}

} // namespace ribkit::cli
