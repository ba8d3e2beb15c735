// What people write, handed to its parsers. Whatever it is, it is read or refused in one printable line; anything else
// ends the program.
#include "base/duration.h"
#include "base/input_error.h"
#include "base/near_names.h"
#include "cli/messages/network_bytes.h"
#include "fuzz/inputs.h"
#include "lab/files/fabric_file.h"
#include "platform/faults/fault_script.h"
#include "ribkit_platform.h"
#ifdef RIBKIT_NATS_OPTIONS
#include "platform/nats/nats_options.h"
#endif

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

using namespace ribkit;

namespace {

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

bool is_one_line(std::string_view text) {
    return !text.empty() && std::none_of(text.begin(), text.end(), base::is_control);
}

template <typename Parser> int refused_or_read(const Parser &parse) {
    try {
        parse();
    } catch (const std::runtime_error &error) { // the parsers' own errors are such; a library's logic errors are not
        require(is_one_line(error.what()));
    }
    return 0;
}

std::string text_of(const uint8_t *data, size_t size) { return {data, data + size}; }

} // namespace

int fabric_input(const uint8_t *data, size_t size) {
    return refused_or_read([&] { lab::parse_fabric(text_of(data, size), "input"); });
}

int faults_input(const uint8_t *data, size_t size) {
    platform::fault_script script;
    const std::string wrong = script.parse(text_of(data, size));
    if (wrong.empty()) {
        script.next_message();
        script.failure_of(platform::service_call::send);
    }
    return 0;
}

int bytes_input(const uint8_t *data, size_t size) {
    const std::string text = text_of(data, size);
    for (const cli::byte_form form : {cli::byte_form::detected, cli::byte_form::hex, cli::byte_form::raw}) {
        refused_or_read([&] { cli::network_bytes(text, form); });
    }
    return 0;
}

int words_input(const uint8_t *data, size_t size) {
    const std::string text = text_of(data, size);
    if (const auto read = base::parse_duration(text)) {
        require(base::parse_duration(base::duration_text(*read)) == read);
    }
    uint32_t number = 0;
    if (if_index_parse(text.c_str(), &number) == 0) {
        std::array<char, 128> name{};
        sprintf_if_index(name.data(), number);
        require(text.c_str() == std::string(name.data()));
    }
    base::no_such_name(text, "KIND", {"fcu", "fcl", "port"}, "--list");
#ifdef RIBKIT_NATS_OPTIONS
    platform::nats_place place;
    if (platform::parse_nats_url(text, place)) {
        require(!place.prefix.empty() && place.prefix.find_first_of(" *>\r\n\t") == std::string::npos);
        require(place.queue.find_first_of(" \r\n\t") == std::string::npos);
    }
#endif
    return 0;
}
