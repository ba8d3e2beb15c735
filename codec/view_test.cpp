// Views against bytes laid out by hand, in both byte orders and at every alignment; and against the converters.
#include "codec/messages/forms.h"
#include "codec/messages/query.h"
#include "codec/messages/route.h"
#include "codec/view.h"
#include "fib_codec.h"
#include "rib_codec.h"
#include "rib_codes.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <vector>

namespace ribkit::codec {
namespace {

using bytes = std::vector<uint8_t>;

/// A unicast record with two hops.
const bytes unicast{0x00, 0x02, 0x00, 0x00, 0x00, 0xff, 0x00, 0x00, 0x11, 0x12, 0x25, 1,    2,    3,    4,    5,
                    0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x02, 0x58, 0x00, 0x00, 0x00, 0x0d, 0x00, 0x00, 0x00, 0x02,
                    0x01, 0x00, 0x10, 0x00, 0x00, 0x00, 0x00, 0x65, 0x01, 0x00, 0x20, 0x00, 0x00, 0x00, 0x00, 0x66};

TEST(view, reads_fields_where_they_stand_at_any_alignment) {
    for (size_t shift = 0; shift < 4; ++shift) {
        bytes moved(shift, 0xee);
        moved.insert(moved.end(), unicast.begin(), unicast.end());
        const view<wire::fcurt> route(moved.data() + shift);
        EXPECT_EQ(route.get<"fcid">(), 0x00020000U);
        EXPECT_EQ(route.get<"mask">(), 0x00ff0000U);
        EXPECT_EQ(route.get<"rctl">(), 0x11);
        EXPECT_EQ(route.get<"rctl_mask">(), 0x12);
        EXPECT_EQ(route.get<"action">(), 1U);
        EXPECT_EQ(route.get<"metric">(), 600U);
        EXPECT_EQ(route.get<"n_hop">(), 2U);
        EXPECT_EQ(route.size(), unicast.size());
        EXPECT_EQ(route.data(), moved.data() + shift);
    }
}

TEST(view, reads_parts_of_words_and_of_bytes) {
    const view<wire::fcurt> route(unicast.data());
    EXPECT_EQ((route.get<"flag", "active">()), 1U);
    EXPECT_EQ((route.get<"flag", "volatile">()), 1U);
    EXPECT_EQ((route.get<"flag", "direct">()), 1U);
    EXPECT_EQ((route.get<"byte_10", "rewrite">()), 1U);
    EXPECT_EQ((route.get<"byte_10", "reason">()), 5U);
    const bytes label{0x12, 0x34, 0x5b, 0x40};
    EXPECT_EQ((view<wire::label>(label.data()).get<"label", "label">()), 0x12345U);
    EXPECT_EQ((view<wire::label>(label.data()).get<"label", "exp">()), 5U);
    EXPECT_EQ((view<wire::label>(label.data()).get<"label", "bottom">()), 1U);
    EXPECT_EQ((view<wire::label>(label.data()).get<"label", "ttl">()), 0x40U);
}

TEST(view, reads_of_a_part_in_one_byte_that_byte_only) {
    const auto first = std::make_unique<uint8_t[]>(3); // as much as there is: a sanitizer sees a fourth
    first[0] = 2;
    first[1] = 3;
    first[2] = 0xa0;
    const view<wire::fclrt_intf> hop(first.get());
    EXPECT_EQ((hop.get<"ctrl", "pop">()), 2U);
    EXPECT_EQ((hop.get<"ctrl", "push">()), 3U);
    EXPECT_EQ((hop.get<"ctrl", "use_up">()), 1U);
    EXPECT_EQ((hop.get<"ctrl", "use_ttl">()), 0U);
    EXPECT_EQ((hop.get<"ctrl", "dec_ttl">()), 1U);
}

TEST(view, finds_the_parts_of_a_number_in_either_order) {
    const bytes big{0, 0, 1, 0xf4, 0x05, 0x32, 0x01, 0x2c};
    bytes little(big.rbegin(), big.rend());
    std::rotate(little.begin(), little.begin() + 4, little.end());
    const auto expect_parts = [](auto vsan) {
        EXPECT_EQ(vsan.template get<"latency">(), 500U);
        EXPECT_EQ((vsan.template get<"word_4", "interop_mode_4">()), 1U);
        EXPECT_EQ((vsan.template get<"word_4", "iod_valid">()), 0U);
        EXPECT_EQ((vsan.template get<"word_4", "iod">()), 1U);
        EXPECT_EQ((vsan.template get<"word_4", "balance">()), 3U);
        EXPECT_EQ((vsan.template get<"word_4", "state">()), 2U);
        EXPECT_EQ((vsan.template get<"word_4", "vsan">()), 300U);
    };
    expect_parts(view<wire::vsan, std::endian::big>(big.data()));
    expect_parts(view<wire::vsan, std::endian::little>(little.data()));
}

TEST(view, one_that_is_written_is_read_where_one_is_asked_for) {
    bytes record(unicast);
    const writable_view<wire::fcurt> written(record.data());
    const view<wire::fcurt> read = written;
    written.set<"metric">(7U);
    EXPECT_EQ(read.get<"metric">(), 7U);
    static_assert(!std::is_convertible_v<view<wire::fcurt>, writable_view<wire::fcurt>>);
    static_assert(!std::is_convertible_v<writable_view<wire::fcurt>, view<wire::fclrt>>);
}

TEST(view, a_number_is_as_wide_as_its_field) {
    const view<wire::node> node(unicast.data());
    static_assert(std::is_same_v<decltype(node.get<"module">()), uint8_t>);
    static_assert(std::is_same_v<decltype(node.get<"ports">()), uint16_t>);
    static_assert(std::is_same_v<decltype(node.get<"address">()), uint32_t>);
    EXPECT_EQ(node.get<"type">(), 2);
    EXPECT_EQ(node.get<"ports">(), 0x00ff);
    EXPECT_EQ(node.get<"node">(), 0x0000);
    EXPECT_EQ(node.get<"address">(), 0x11122501U);
}

TEST(view, what_is_numbered_from_0_is_shown_from_1) {
    const bytes record{0, 0, 0, 255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3};
    EXPECT_EQ(view<wire::fib_state>(record.data()).shown<"module">(), 256U);
    EXPECT_EQ(view<wire::fib_state>(record.data()).shown<"state">(), 3U);
    EXPECT_EQ(view<wire::node>(record.data() + 3).shown<"module">(), 256U);
}

TEST(view, of_a_masked_byte_only_the_mask_is_read_and_written) {
    bytes record(24, 0xff);
    const writable_view<wire::port> port(record.data());
    EXPECT_EQ(port.get<"bundle">(), 0x80);
    port.set<"bundle">(uint8_t{0x7f});
    EXPECT_EQ(port.get<"bundle">(), 0);
    EXPECT_EQ(record[5], 0x7f);
}

TEST(view, walks_lists_of_even_and_of_own_sizes) {
    std::vector<uint32_t> domains;
    const view<wire::fcurt> route(unicast.data());
    for (const auto hop : route.list<"hop">()) {
        domains.push_back(hop.get<"domain">());
    }
    EXPECT_EQ(domains, (std::vector<uint32_t>{0x65, 0x66}));
    EXPECT_EQ(route.list<"hop">()[1].get<"intf">(), 0x01002000U);

    // A count of two, then an entry of its first word with so many labels pushed, each.
    bytes record(104, 0);
    record[31] = 2;
    for (const uint8_t pushed : {uint8_t{2}, uint8_t{0}}) {
        record.insert(record.end(), {0, pushed, 0, 0, 1, 1, pushed, 1});
        for (uint8_t i = 0; i < pushed; ++i) {
            record.insert(record.end(), {0, 0, i, 9});
        }
    }
    const view<wire::fclrt> labels(record.data());
    std::vector<uint32_t> seen;
    auto entry = labels.list<"intf">().begin();
    for (; entry != labels.list<"intf">().end(); ++entry) {
        seen.push_back((*entry).get<"intf">());
        for (const auto label : (*entry).list<"push">()) {
            seen.push_back(label.get<"label">());
        }
    }
    EXPECT_EQ(seen, (std::vector<uint32_t>{0x01010201, 9, 0x0109, 0x01010001}));
    EXPECT_EQ(entry.at(), record.data() + record.size());
    EXPECT_EQ(labels.size(), record.size());
}

TEST(view, a_list_of_a_constant_count_has_all_its_entries) {
    bytes record(192, 0);
    record[12 * 15 + 3] = 7;
    const auto pools = view<wire::in_mem>(record.data()).list<"pool">();
    EXPECT_EQ(pools.size(), 16U);
    EXPECT_FALSE(pools.empty());
    EXPECT_EQ(pools[15].get<"pool">(), 7U);
}

TEST(view, the_same_bytes_are_read_as_another_layout_has_them) {
    const bytes hops{0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 0x30, 0x40, 0, 0, 0x0c, 0xa0, 1, 0, 0, 2};
    const view<wire::fclrt_intf> first(hops.data());
    EXPECT_EQ(first.list<"push">()[0].get<"label">(), 0x3040U);
    const view<wire::fclrt_intf> second(hops.data() + first.size());
    EXPECT_EQ((second.as<wire::ucast_hop>().get<"ctrl", "domain">()), 0x65U);
    EXPECT_EQ(second.data() + second.size(), hops.data() + hops.size());
}

TEST(view, areas_and_texts_end_where_their_field_does) {
    bytes record(88 + 1, 'x');
    const view<wire::registration> reg(record.data());
    EXPECT_EQ(reg.size(), 88U);
    EXPECT_EQ(reg.text<"name">().size(), 80U);
    record[8 + 4] = 0;
    EXPECT_EQ(reg.text<"name">(), "xxxx");
    static_assert(decltype(reg.area<"name">())::extent == 80);
    EXPECT_EQ(reg.area<"name">().data(), record.data() + 8);
}

TEST(view, writes_numbers_parts_and_areas_and_nothing_else) {
    bytes record(88, 0xaa);
    const writable_view<wire::registration> reg(record.data());
    reg.set<"uuid">(RIB_CLIENT_FSPF).set<"distance">(0x01020304).set_text<"name">("fspf");
    EXPECT_EQ(bytes(record.begin(), record.begin() + 8), (bytes{0, 0, 0, 12, 1, 2, 3, 4}));
    EXPECT_EQ(reg.text<"name">(), "fspf");
    for (size_t at = 12; at < 88; ++at) {
        EXPECT_EQ(record[at], 0) << at;
    }
    reg.set_text<"name">(std::string(100, 'y'));
    EXPECT_EQ(reg.text<"name">(), std::string(80, 'y'));
    reg.set_bytes<"name">({});
    EXPECT_EQ(bytes(record.begin() + 8, record.end()), bytes(80, 0));

    bytes ctrl(8, 0xff);
    writable_view<wire::fclrt_intf>(ctrl.data()).set<"ctrl", "push">(0x102).set<"ctrl", "dec_ttl">(0);
    EXPECT_EQ(bytes(ctrl.begin(), ctrl.begin() + 4), (bytes{0xff, 0x02, 0xdf, 0xff}));
}

// What one side writes in host order is what the other reads in network order.
TEST(view, both_orders_agree_with_the_converters) {
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        bytes host(360);
        for (uint8_t &b : host) {
            b = static_cast<uint8_t>(random());
        }
        const view<wire::fcurt, std::endian::native, uint8_t> sent(host.data());
        const uint32_t hops = random() % 9;
        sent.set<"n_hop">(hops);
        bytes network(host.size());
        ASSERT_EQ(rib_hton_fcurt(host.data(), network.data()), sent.size());
        const view<wire::fcurt> received(network.data());
        EXPECT_EQ(received.get<"fcid">(), sent.get<"fcid">());
        EXPECT_EQ(received.get<"mask">(), sent.get<"mask">());
        EXPECT_EQ(received.get<"rctl_mask">(), sent.get<"rctl_mask">());
        EXPECT_EQ((received.get<"flag", "volatile">()), (sent.get<"flag", "volatile">()));
        ASSERT_EQ(received.list<"hop">().size(), hops);
        for (uint32_t i = 0; i < hops; ++i) {
            EXPECT_EQ(received.list<"hop">()[i].get<"intf">(), sent.list<"hop">()[i].get<"intf">());
        }
        const host_view<wire::node> module(host.data());
        fib_hton_node(host.data(), network.data());
        EXPECT_EQ(view<wire::node>(network.data()).get<"node">(), module.get<"node">());
        EXPECT_EQ(view<wire::node>(network.data()).get<"type">(), module.get<"type">());
    }
}

} // namespace
} // namespace ribkit::codec
