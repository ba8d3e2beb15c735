// Nothing is written before all of the input is known to be good.
#include "cli/messages/encode_command.h"

#include "base/input_error.h"
#include "base/spool.h"
#include "base/text.h"
#include "cli/messages/message_kinds.h"
#include "cli/messages/network_input.h"
#include "decode/decoder.h"
#include "decode/encoder.h"

#include <algorithm>

namespace ribkit::cli {

namespace {

/// Writes lines of eight words, which `ribkit decode` reads. A message begins a line.
void add_hexadecimal(base::spool &to, std::span<const uint8_t> bytes) {
    constexpr size_t line_size = 32;
    std::string line;
    while (!bytes.empty()) {
        const auto piece = bytes.first(std::min(bytes.size(), line_size));
        line.clear();
        for (size_t at = 0; at < piece.size(); ++at) {
            constexpr std::string_view digits = "0123456789abcdef";
            line.append(at != 0 && at % 4 == 0 ? " " : "");
            line += digits[piece[at] >> 4];
            line += digits[piece[at] & 0xf];
        }
        to.add(line += '\n');
        bytes = bytes.subspan(piece.size());
    }
}

void encode_file(const encode_options &options) {
    raw_input input(options.file);
    command_output out(options.output, {options.file});
    base::spool encoded;
    decode::json_reader json([&](char *to, size_t size) { return input.read(to, size); });
    decode::encoder messages([&](const decode::kind & /*what*/, std::span<const uint8_t> bytes) {
        if (options.hex) {
            add_hexadecimal(encoded, bytes);
        } else {
            encoded.add({reinterpret_cast<const char *>(bytes.data()), bytes.size()});
        }
    });
    try {
        messages.read(json);
    } catch (const decode::encode_error &error) {
        throw base::input_error(base::joined(input.title(), ": ", error.what()));
    }
    encoded.hand_on([&](std::string_view piece) { out.print(piece); });
    out.finish();
}

} // namespace

int run_encode(const encode_options &options) {
    if (options.template_for.empty()) {
        encode_file(options);
        return 0;
    }
    const std::string start = decode::template_of(kind_named(options.template_for));
    command_output out(options.output);
    out.print(start);
    out.finish();
    return 0;
}

} // namespace ribkit::cli
