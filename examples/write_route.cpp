// A C++20 program that reads and writes messages by the names of their fields, where they stand and as they travel: a
// client writes an update of two routes, the other side checks it and reads it.
#include <array>
#include <codec/messages/route.h>
#include <codec/writer.h>
#include <cstdint>
#include <cstdio>
#include <rib_check.h>
#include <rib_codes.h>
#include <span>

using namespace ribkit;

namespace {

/// Adds a route over one interface, or nothing of it where there is no room for all.
bool add_route(const codec::writer<wire::fcurt_update> &update, uint32_t domain, uint32_t metric, uint32_t interface) {
    const auto route = update.add<"route">();
    route.set<"fcid">(domain << 16).set<"mask">(RIB_MASK_DOMAIN).set<"action">(RIB_ACTION_ADD);
    route.set<"metric">(metric).set<"flag", "active">(1);
    route.add<"hop">().set<"intf">(interface).set<"domain">(domain);
    if (!update.is_whole()) {
        update.take_back<"route">(route);
        return false;
    }
    return true;
}

/// @return how many bytes of the room the update takes
uint32_t write_update(std::span<uint8_t> room) {
    const codec::writer<wire::fcurt_update> update(room);
    update.set<"uuid">(RIB_CLIENT_FSPF).set<"vsan">(1U).set<"oper">(RIB_OPER_UPDATE_RSP);
    for (const uint32_t domain : {7U, 9U, 11U}) {
        if (!add_route(update, domain, 250 * domain, 0x01000000 + domain)) {
            std::printf("no room for the route to domain %u\n", domain);
        }
    }
    return update.size(); // the writer has counted routes and hops
}

/// What comes from elsewhere is checked before it is read.
bool read_update(std::span<const uint8_t> bytes) {
    rib_check_report why{};
    if (rib_check_fcurt_update(bytes.data(), static_cast<uint32_t>(bytes.size()), &why) != RIB_OK) {
        std::array<char, 160> text{};
        rib_check_report_str(&why, text.data(), text.size());
        std::printf("%s\n", text.data());
        return false;
    }
    const codec::view<wire::fcurt_update> update(bytes.data());
    std::printf("client %u, VSAN %u: %u routes in %u bytes\n", update.get<"uuid">(), update.get<"vsan">(),
                update.get<"n_route">(), update.size());
    for (const auto route : update.list<"route">()) {
        std::printf("0x%06x, metric %u:", route.get<"fcid">(), route.get<"metric">());
        for (const auto hop : route.list<"hop">()) {
            std::printf(" 0x%08x to domain %u", hop.get<"intf">(), hop.get<"domain">());
        }
        std::printf("\n");
    }
    return true;
}

} // namespace

int main() {
    std::array<uint8_t, wire::fcurt_update.size + 2 * (wire::fcurt.size + wire::fcurt_hop.size)> message{};
    const uint32_t size = write_update(message);
    return read_update(std::span(message).first(size)) && !read_update(std::span(message).first(size - 1)) ? 0 : 1;
}
