// Nothing is written before all of the input is known to be good.
#include "tools/encode_command.h"

#include "decode/decoder.h"
#include "decode/encoder.h"
#include "tools/input_error.h"
#include "tools/message_kinds.h"
#include "tools/network_input.h"
#include "tools/spool.h"

namespace ribkit::tools {

namespace {

/// Lines of eight words, which `ribkit decode` reads. A message begins a line.
std::string hexadecimal(std::span<const uint8_t> bytes) {
    constexpr size_t line_size = 32;
    std::string text;
    text.reserve(bytes.size() * 9 / 4 + 64);
    for (size_t at = 0; at < bytes.size(); ++at) {
        constexpr std::string_view digits = "0123456789abcdef";
        if (at != 0 && at % 4 == 0) {
            text += at % line_size == 0 ? '\n' : ' ';
        }
        text += digits[bytes[at] >> 4];
        text += digits[bytes[at] & 0xf];
    }
    text += '\n';
    return text;
}

void encode_file(const encode_options &options) {
    raw_input input(options.file);
    command_output out(options.output, {options.file});
    spool encoded;
    decode::json_reader json([&](char *to, size_t size) { return input.read(to, size); });
    decode::encoder messages([&](const decode::kind & /*what*/, std::span<const uint8_t> bytes) {
        encoded.add(options.hex ? hexadecimal(bytes)
                                : std::string_view(reinterpret_cast<const char *>(bytes.data()), bytes.size()));
    });
    try {
        messages.read(json);
    } catch (const decode::encode_error &error) {
        throw input_error(joined(input.title(), ": ", error.what()));
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

} // namespace ribkit::tools
