// How many routes a second are shown and read back, beside what prints and parses the same text: a line a printf, and
// nlohmann-json for a document that it holds already.
#include "bench/harness.h"
#include "decode/decoder.h"
#include "decode/encoder.h"
#include "protocol/route_messages.h"
#include "rib_codes.h"

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <sstream>

namespace ribkit::decode {

namespace {

constexpr size_t routes_a_message = 1000;
constexpr int rounds = 50;
constexpr double least_a_second = 500'000;

const kind &update_kind() { return *find_kind("rib_fcurt_update"); }

/// Routes with two next hops each, as a fabric has them.
std::vector<uint8_t> update() {
    std::vector<uint8_t> bytes(wire::fcurt_update.size + routes_a_message * protocol::fcurt_record_size(2));
    const protocol::update_writer message(bytes);
    message.set<"uuid">(RIB_CLIENT_FSPF).set<"vsan">(20).set<"oper">(RIB_OPER_UPDATE);
    for (uint32_t i = 0; i < routes_a_message; ++i) {
        const uint32_t port = 0x0101'0000 + (i % 48 << 12);
        const model::route what{1000 + i, RIB_FLAG_ACTIVE, {{port, i % 239 + 1}, {port + 0x1000, i % 17 + 1}}};
        if (!protocol::add_route(message, RIB_ACTION_ADD, {i << 8, 0xffff00}, what)) {
            std::abort(); // there is room for all of them
        }
    }
    return bytes;
}

/// The message as text or as JSON, piece by piece.
template <class Take> void show_text(std::span<const uint8_t> bytes, const Take &take) {
    output out(take);
    text_writer text(out, false);
    decoder(update_kind(), nullptr, &text, nullptr).take(bytes, false);
    out.flush();
}
template <class Take> void show_json(std::span<const uint8_t> bytes, json_form form, const Take &take) {
    output out(take);
    json_writer json(out, form);
    decoder(update_kind(), nullptr, nullptr, &json).take(bytes, false);
    json.finish();
    out.flush();
}

void drop(std::string_view piece) { bench::keep(piece.data()); }

/// A line taken apart, for a printf to put together.
struct text_line {
    int indent;
    std::string name, value, said;
};

std::vector<text_line> lines_of(const std::string &text) {
    std::vector<text_line> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        text_line one{static_cast<int>(line.find_first_not_of(' ')), {}, {}, {}};
        words >> one.name >> one.value;
        std::getline(words, one.said);
        lines.push_back(one);
    }
    return lines;
}

void print_lines(const std::vector<text_line> &lines) {
    char room[256];
    for (const text_line &line : lines) {
        const auto number = static_cast<unsigned>(std::strtoul(line.value.c_str(), nullptr, 0));
        std::snprintf(room, sizeof room, "%*s%-20s%u%s\n", line.indent, "", line.name.c_str(), number,
                      line.said.c_str());
        bench::keep(static_cast<const char *>(room));
    }
}

void row(const char *what, const bench::times &t, double bound) {
    const double a_second = 1e9 / t.ours;
    std::printf("%-58s %12.2f %12.2f %8.3f  %s %.4g; %.0f routes/s, %s %.0f\n", what, t.ours, t.peer, t.ratio(),
                t.ratio() > bound ? "above its bound of" : "at most", bound, a_second,
                a_second < least_a_second ? "below the least of" : "at least", least_a_second);
    std::fflush(stdout);
}

void text_row(std::span<const uint8_t> bytes) {
    std::string text;
    show_text(bytes, [&](std::string_view piece) { text += piece; });
    const std::vector<text_line> lines = lines_of(text);
    row("text, to a printf a line",
        bench::compare(
            routes_a_message, [&] { show_text(bytes, drop); }, [&] { print_lines(lines); }, rounds),
        0.4);
}

void json_rows(const char *what, std::span<const uint8_t> bytes, json_form form, double show_bound, double read_bound) {
    std::string text;
    show_json(bytes, form, [&](std::string_view piece) { text += piece; });
    const auto document = nlohmann::ordered_json::parse(text);
    const int indent = form == json_form::lines ? -1 : 2;
    row(("JSON, " + std::string(what) + ", to nlohmann's dump").c_str(),
        bench::compare(
            routes_a_message, [&] { show_json(bytes, form, drop); }, [&] { bench::keep(document.dump(indent)); },
            rounds),
        show_bound);
    row(("encode, " + std::string(what) + ", to nlohmann's parse").c_str(),
        bench::compare(
            routes_a_message,
            [&] {
                json_reader in{std::string_view(text)};
                encoder([](const kind &, std::span<const uint8_t> message) { bench::keep(message.data()); }).read(in);
            },
            [&] { bench::keep(nlohmann::ordered_json::parse(text)); }, rounds),
        read_bound);
}

} // namespace

} // namespace ribkit::decode

int main() {
    using namespace ribkit::decode;
    const std::vector<uint8_t> bytes = update();
    ribkit::bench::heading("decode and encode, routes with two next hops", "route");
    text_row(bytes);
    json_rows("indented", bytes, json_form::array, 0.4, 0.4);
    json_rows("in lines", bytes, json_form::lines, 0.4, 0.4);
}
