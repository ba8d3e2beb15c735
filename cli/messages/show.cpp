// Records are checked one after the other, and the first that is refused ends the command with its report.
#include "cli/messages/show.h"

#include "base/input_error.h"
#include "base/input_file.h"
#include "base/text.h"
#include "cli/messages/message_kinds.h"
#include "decode/decoder.h"

#include <iomanip>
#include <optional>

namespace ribkit::cli {

namespace {

std::vector<uint8_t> bytes_of(const std::string &content, byte_form form, const std::string &title) {
    try {
        return network_bytes(content, form);
    } catch (const base::line_error &error) {
        throw base::input_error(base::joined(title, ':', error.line, ": ", error.what()));
    }
}

std::string displays_text() {
    std::string text;
    for (const display &kind : displays()) {
        text += base::joined(std::left, std::setw(12), kind.short_name(), "  ", kind.what, '\n');
    }
    return text;
}

void list_displays(const output_options &options) {
    command_output out(options);
    out.print(displays_text());
    print_json(out, displays());
    out.finish();
}

/// The records as an array of messages, up to the first that is refused.
std::optional<decode::refusal> print_records(command_output &out, const display &kind, std::span<const uint8_t> bytes) {
    decode::output pieces([&out](std::string_view piece) { out.print_json(piece); });
    decode::json_writer json(pieces, decode::json_form::array);
    decode::decoder records(kind_named(std::string(kind.message)), nullptr, nullptr, &json);
    records.take(bytes, false);
    json.finish();
    pieces.flush();
    return records.refused();
}

base::input_error refused_record(const std::string &title, size_t number, size_t at, const rib_check_report &report) {
    return base::input_error(
        base::joined(title, ": record ", number, " at byte ", at, ": ", decode::report_text(report)));
}

void refuse_nothing(std::span<const uint8_t> bytes, const std::string &title) {
    if (bytes.empty()) {
        throw base::input_error(base::joined(title, ": holds no bytes"));
    }
}

} // namespace

void show_records(const display &kind, std::span<const uint8_t> bytes, const std::string &title) {
    refuse_nothing(bytes, title);
    uint32_t header = 1;
    size_t at = 0;
    for (size_t number = 1; at != bytes.size(); number++) {
        rib_check_report report{};
        const uint32_t size = record_size(kind, bytes.subspan(at), report);
        if (size == 0) {
            throw refused_record(title, number, at, report);
        }
        kind.show(&header, bytes.data() + at);
        at += size;
    }
}

int run_show(const show_options &options) {
    if (options.list) {
        list_displays(options.output);
        return 0;
    }
    const display &kind = display_named(options.kind);
    const std::string title = base::input_title(options.file);
    const std::vector<uint8_t> bytes = bytes_of(base::read_input(options.file), options.form, title);
    command_output out(options.output, {options.file});
    refuse_nothing(bytes, title);
    std::optional<decode::refusal> refused;
    if (out.wants_json()) {
        refused = print_records(out, kind, bytes);
    }
    out.display([&] { show_records(kind, bytes, title); });
    out.finish();
    if (refused) { // of JSON alone
        throw refused_record(title, refused->number, refused->offset, refused->report);
    }
    return 0;
}

} // namespace ribkit::cli
