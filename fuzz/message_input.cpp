// Messages by name: network bytes to fields and back, and JSON of any origin. Whatever the bytes are, what is shown is
// JSON, and what is accepted comes back; whatever the JSON is, it is refused in one line or makes messages that come
// back.
#include "decode/decoder.h"
#include "decode/encoder.h"
#include "fuzz/inputs.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

using namespace ribkit;
using namespace ribkit::decode;

namespace {

using byte_vector = std::vector<uint8_t>;

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

struct shown {
    std::string json;
    std::string text;
    bool refused = false;
};

/// From memory of just the bytes' size, so that a sanitizer sees every step aside.
shown show(const kind &what, std::span<const uint8_t> bytes) {
    const auto copy = std::make_unique_for_overwrite<uint8_t[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), copy.get());
    shown result;
    output json_to([&](std::string_view piece) { result.json += piece; });
    output text_to([&](std::string_view piece) { result.text += piece; });
    json_writer json(json_to, json_form::array);
    text_writer text(text_to, true);
    decoder messages(what, nullptr, &text, &json);
    messages.take({copy.get(), bytes.size()}, false);
    json.finish();
    json_to.flush();
    text_to.flush();
    result.refused = messages.refused().has_value();
    return result;
}

/// The messages of some JSON; none where it is refused, in one line.
bool encoded(std::string_view json, byte_vector &bytes,
             const std::function<void(const kind &, byte_vector)> &each = {}) {
    try {
        json_reader in(json);
        encoder([&](const kind &what, std::span<const uint8_t> message) {
            bytes.insert(bytes.end(), message.begin(), message.end());
            if (each) {
                each(what, {message.begin(), message.end()});
            }
        }).read(in);
        return true;
    } catch (const encode_error &error) {
        require(std::string_view(error.what()).find('\n') == std::string_view::npos);
        return false;
    }
}

void require_back(const kind &what, std::span<const uint8_t> bytes) {
    const shown all = show(what, bytes);
    byte_vector back;
    require(encoded(all.json, back) == !all.refused);
    require(all.refused || std::equal(back.begin(), back.end(), bytes.begin(), bytes.end()));
    json_reader whole(all.json);
    require(whole.value().size() <= all.json.size() && whole.peek() == '\0');
}

} // namespace

int decode_input(const uint8_t *data, size_t size) {
    if (size != 0) {
        require_back(kinds()[*data % kinds().size()], {data + 1, size - 1});
    }
    return 0;
}

int encode_input(const uint8_t *data, size_t size) {
    byte_vector all;
    encoded({reinterpret_cast<const char *>(data), size}, all,
            [](const kind &what, const byte_vector &message) { require_back(what, message); });
    return 0;
}
