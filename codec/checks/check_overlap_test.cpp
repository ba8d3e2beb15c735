// Tables of overlapping unicast routes: what the check reports is what a walk of one route after another would.
#include "codec/checks/check_core.h"
#include "codec/checks/check_odd.h"
#include "codec/checks/check_overlap.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using namespace ribkit::codec;
using byte_vector = std::vector<uint8_t>;

constexpr size_t header = 8;
constexpr size_t fixed = 36; // of a route, and from route to route
constexpr size_t n_hop_at = 32;
constexpr size_t per_hop = 8;

struct answer {
    uint32_t code = 0;
    rib_check_report report{"", "", 0, 0, 0, RIB_CHECK_COUNT};

    bool operator==(const answer &other) const {
        const rib_check_report &a = report;
        const rib_check_report &b = other.report;
        return code == other.code && std::string_view(a.field) == b.field && a.offset == b.offset &&
               a.found == b.found && a.allowed == b.allowed && a.rule == b.rule;
    }
};

void PrintTo(const answer &a, std::ostream *out) {
    *out << std::hex << a.code << std::dec << ' ' << a.report.field << " at " << a.report.offset << ": "
         << a.report.found << " of " << a.report.allowed;
}

answer one_call(const byte_vector &bytes) {
    answer said;
    said.code = rib_check_fcurt_info(bytes.data(), static_cast<uint32_t>(bytes.size()), &said.report);
    return said;
}

/// Every route walked by itself, then every count looked up in a map of the swapped bytes.
answer one_by_one(const byte_vector &bytes) {
    answer said;
    checker<uncounted> c(core_checks::tables, "", bytes.data(), bytes.size(), &said.report);
    size_t end = header;
    if (bytes.size() < header) {
        said.code = c.walk(core_checks::plan<ribkit::wire::fcurt_info>(), 0, end);
        return said;
    }
    const uint32_t count = be32(bytes.data());
    for (size_t i = 0; i < count; ++i) {
        said.code = c.walk(core_checks::plan<ribkit::wire::ucast_route>(), header + i * fixed, end);
        if (said.code != 0) {
            return said;
        }
    }
    std::vector<bool> swapped(bytes.size());
    for (size_t route = header; route < header + count * fixed; route += fixed) {
        const uint32_t hops = be32(&bytes[route + n_hop_at]);
        if (hops != 0 && swapped[route + n_hop_at]) {
            said.code =
                refuse(&said.report, {"", "n_hop", static_cast<uint32_t>(route + n_hop_at), hops, 0, RIB_CHECK_COUNT});
            return said;
        }
        std::fill_n(swapped.begin() + static_cast<ptrdiff_t>(route + fixed), hops * per_hop, true);
    }
    const auto size = static_cast<uint32_t>(bytes.size());
    if (end != size) {
        said.code = refuse(
            &said.report, {"", "size", static_cast<uint32_t>(end), size, static_cast<uint32_t>(end), RIB_CHECK_EXCESS});
    }
    return said;
}

class overlapping : public ::testing::Test {
  protected:
    std::mt19937 random{29};
    uint32_t below(size_t limit) { return static_cast<uint32_t>(random() % limit); }

    /// Routes whose counts reach over one another, seldom beyond the message; a few hops with labels.
    byte_vector message() {
        byte_vector bytes(header + below(900));
        const uint32_t labels = below(3) == 0 ? 12 : 150;
        for (size_t at = 0; at + 4 <= bytes.size(); at += 4) {
            store32<std::endian::big>(&bytes[at], below(labels) == 0 ? below(5) << 16 : 0);
        }
        const size_t room = (bytes.size() - header) / fixed;
        store32<std::endian::big>(bytes.data(), below(9) == 0 ? below(40) : below(room + 1));
        const uint32_t seldom = 1 + below(8);
        for (size_t at = header; at + fixed <= bytes.size(); at += fixed) {
            const size_t left = bytes.size() - at - fixed;
            const size_t most = left / per_hop + (below(40) == 0 ? 3 : 1);
            store32<std::endian::big>(&bytes[at + n_hop_at], below(seldom) != 0 ? 0 : below(most));
        }
        return bytes;
    }
};

TEST_F(overlapping, unicast_routes_are_refused_as_a_walk_one_by_one_refuses_them) {
    constexpr unsigned rounds = RIBKIT_EMULATED ? 5000 : 100000;
    unsigned overlaps = 0;
    unsigned bad_hops = 0;
    for (unsigned round = 0; round < rounds; ++round) {
        byte_vector bytes = message();
        const answer wanted = one_by_one(bytes);
        ASSERT_EQ(one_call(bytes), wanted);
        overlaps += wanted.code == RIB_BAD_PARAMETERS && wanted.report.allowed == 0 ? 1 : 0;
        bad_hops += std::string_view(wanted.report.field) == "ctrl" ? 1 : 0;
    }
    EXPECT_GT(overlaps, rounds / 20);
    EXPECT_GT(bad_hops, rounds / 20);
}

TEST_F(overlapping, unicast_routes_cut_short_anywhere_are_refused_there) {
    for (unsigned round = 0; round < (RIBKIT_EMULATED ? 10 : 100); ++round) {
        byte_vector bytes = message();
        while (!bytes.empty()) {
            bytes.pop_back();
            ASSERT_EQ(one_call(bytes), one_by_one(bytes)) << bytes.size();
        }
    }
}

} // namespace
