// Beside the golden messages: updates with all the records of a table, envelopes, images of allocators.
#include "fuzz/seeds.h"

#include "codec/message.h"
#include "codec/messages/route.h"
#include "codec/view.h"
#include "codec/witness/golden.h"
#include "codec/witness/naive_check.h"
#include "decode/decoder.h"
#include "fuzz/openers.h"
#include "wrap/cmi_envelope.h"

#include <algorithm>

using namespace ribkit::codec;

namespace ribkit::fuzz {

namespace {

constexpr size_t largest_seed = 2048;

void put(byte_vector &bytes, size_t at, uint32_t word) {
    witness::store_word(witness::order::big, bytes.data() + at, word);
}

std::vector<witness::golden> goldens() { return witness::load_goldens(RIBKIT_SOURCE_DIR "/codec/witness/golden"); }

void add(std::vector<sample> &all, const std::string &name, byte_vector message) {
    const opener *how = find_opener(name);
    if (how != nullptr && how->check(message.data(), static_cast<uint32_t>(message.size()), nullptr) == 0) {
        all.push_back({name, static_cast<uint8_t>(how - openers().data()), std::move(message)});
    }
}

/// An update of all the golden records of its table.
template <const layout &Update> byte_vector whole_update(const std::vector<sample> &all, std::string_view record) {
    byte_vector update(Update.size);
    uint32_t count = 0;
    for (const sample &s : all) {
        if (s.name == record && update.size() + s.message.size() < largest_seed) {
            update.insert(update.end(), s.message.begin(), s.message.end());
            writable_view<Update>(update.data()).template set<"n_route">(++count);
        }
    }
    return update;
}

/// @param content bytes of it; in a request with its opcode
byte_vector envelope(uint32_t content) {
    byte_vector bytes(wrap::content_at + content);
    wrap::written_envelope(bytes.data()).set<"length">(content);
    return bytes;
}

/// 64 units, 32 carved, free (13 at 3), (14 at 18), used (3 at 0), (2 at 16).
byte_vector bud_image() {
    byte_vector image(156);
    const std::pair<size_t, uint32_t> words[] = {{0, 64}, {4, 32}, {8, 32},  {60, 1},   {64, 1},
                                                 {80, 1}, {84, 1}, {140, 3}, {144, 18}, {148, 16}};
    for (const auto &[at, word] : words) {
        put(image, at, word);
    }
    return image;
}

byte_vector cont_image() {
    byte_vector image(36);
    const uint32_t words[] = {64, 8, 2, 16, 0, 5, 32, 16, 40};
    for (size_t i = 0; i < std::size(words); ++i) {
        put(image, 4 * i, words[i]);
    }
    return image;
}

byte_vector with_number(size_t number, const byte_vector &message) {
    byte_vector input(1 + message.size(), static_cast<uint8_t>(number));
    std::copy(message.begin(), message.end(), input.begin() + 1);
    return input;
}

/// The first few of each message.
void add_seed(std::map<std::string, byte_vector> &seeds, const std::string &name, size_t most,
              const byte_vector &input) {
    size_t number = 1;
    while (seeds.contains(name + "-" + std::to_string(number))) {
        ++number;
    }
    if (input.size() <= largest_seed && number <= most) {
        seeds[name + "-" + std::to_string(number)] = input;
    }
}

} // namespace

std::vector<sample> samples() {
    std::vector<sample> all;
    for (const witness::golden &vector : goldens()) {
        byte_vector message = vector.source(witness::direction::ntoh, witness::order::big);
        if (find_opener(vector.message) != nullptr) {
            message.resize(witness::message_size(vector.message, message).value_or(message.size()));
            add(all, vector.message, message);
        }
    }
    add(all, "rib_fcurt_update", whole_update<wire::fcurt_update>(all, "rib_fcurt"));
    add(all, "rib_fcmrt_update", whole_update<wire::fcmrt_update>(all, "rib_fcmrt"));
    add(all, "rib_fclrt_update", whole_update<wire::fclrt_update>(all, "rib_fclrt"));
    add(all, "cmi_request", envelope(12));
    add(all, "cmi_answer", envelope(8));
    add(all, "bud_image", bud_image());
    add(all, "cont_image", cont_image());
    return all;
}

std::map<std::string, byte_vector> check_seeds() {
    std::map<std::string, byte_vector> seeds;
    for (const sample &s : samples()) {
        add_seed(seeds, s.name, 2, with_number(s.opener, s.message));
    }
    return seeds;
}

std::map<std::string, byte_vector> engine_seeds() {
    std::map<std::string, byte_vector> seeds;
    for (const witness::golden &vector : goldens()) {
        const message *m = find_message(vector.message);
        for (const witness::direction way : {witness::direction::ntoh, witness::direction::hton}) {
            if (m != nullptr && vector.goes(way)) {
                const auto number = static_cast<size_t>(m - messages().data());
                const char *suffix = way == witness::direction::hton ? "-sent" : "";
                add_seed(seeds, vector.message + suffix, 1,
                         with_number(number, vector.source(way, witness::order::little)));
            }
        }
    }
    return seeds;
}

namespace {

/// The longest sample of a message that is not too long, or the message with next to nothing in it.
byte_vector message_of(const decode::kind &what, const std::vector<sample> &all) {
    byte_vector best = decode::empty_message(what);
    for (const sample &s : all) {
        const bool same = s.name == what.name || "rib_" + s.name == what.name;
        best = same && s.message.size() > best.size() && s.message.size() < largest_seed ? s.message : best;
    }
    return best;
}

} // namespace

std::map<std::string, byte_vector> decode_seeds() {
    std::map<std::string, byte_vector> seeds;
    const std::vector<sample> all = samples();
    for (const decode::kind &what : decode::kinds()) {
        const auto number = static_cast<size_t>(&what - decode::kinds().data());
        seeds[what.name] = with_number(number, message_of(what, all));
    }
    return seeds;
}

std::map<std::string, byte_vector> encode_seeds() {
    std::map<std::string, byte_vector> seeds;
    const std::vector<sample> all = samples();
    for (const char *name :
         {"rib_fclrt_update", "rib_fcurt_info", "rib_cmi_request", "bud_image", "cont_image", "rib_in_info",
          "rib_verf_query", "rib_verf_info", "rib_register", "fib_fcl_path", "fib_port"}) {
        const decode::kind &what = *decode::find_kind(name);
        std::string json;
        decode::output out([&](std::string_view piece) { json += piece; });
        decode::json_writer lines(out, decode::json_form::lines);
        decode::decoder(what, nullptr, nullptr, &lines).take(message_of(what, all), false);
        out.flush();
        seeds[name] = {json.begin(), json.end()};
        const std::string start = decode::template_of(what);
        seeds[std::string(name) + "-template"] = {start.begin(), start.end()};
    }
    return seeds;
}

} // namespace ribkit::fuzz
