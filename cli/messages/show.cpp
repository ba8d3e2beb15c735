// Records are checked one after the other, and the first that is refused ends the command with its report.
#include "cli/messages/show.h"

#include "base/input_error.h"
#include "base/input_file.h"
#include "base/near_names.h"
#include "base/text.h"

#include <iomanip>

namespace ribkit::cli {

namespace {

std::string report_line(const rib_check_report &report) {
    std::string line(static_cast<size_t>(rib_check_report_str(&report, nullptr, 0)), '\0');
    rib_check_report_str(&report, line.data(), static_cast<uint32_t>(line.size() + 1));
    return line;
}

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
    out.print_json(json_of(displays()));
    out.finish();
}

} // namespace

void show_records(const display &kind, std::span<const uint8_t> bytes, const std::string &title) {
    if (bytes.empty()) {
        throw base::input_error(base::joined(title, ": holds no bytes"));
    }
    uint32_t header = 1;
    size_t at = 0;
    for (size_t number = 1; at != bytes.size(); number++) {
        rib_check_report report{};
        const uint32_t size = record_size(kind, bytes.subspan(at), report);
        if (size == 0) {
            throw base::input_error(
                base::joined(title, ": record ", number, " at byte ", at, ": ", report_line(report)));
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
    const display *kind = find_display(options.kind);
    if (kind == nullptr) {
        throw base::input_error(base::no_such_name(options.kind, "display", display_names(), "ribkit show --list"));
    }
    const std::string title = base::input_title(options.file);
    const std::vector<uint8_t> bytes = bytes_of(base::read_input(options.file), options.form, title);
    command_output out(options.output, {options.file});
    out.display([&] { show_records(*kind, bytes, title); });
    out.finish();
    return 0;
}

} // namespace ribkit::cli
