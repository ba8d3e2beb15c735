// The displays of single routes and their next hops, as kept outputs and against a second formatter.
#include "diag/show/show_fixture.h"
#include "diag/text/expected_texts.h"
#include "rib_show.h"

using namespace ribkit::diag;
using namespace ribkit::testing;

namespace {

class ShowRoute : public printing_test {};

/// A next hop: pop count, flags and domain bits, interface, labels to push.
record hop(uint32_t pop, uint32_t flags_and_domain, uint32_t if_index, std::initializer_list<uint32_t> labels = {}) {
    return record{}
        .byte(pop)
        .byte(static_cast<uint32_t>(labels.size()))
        .half(flags_and_domain)
        .word(if_index)
        .words(labels);
}

/// The two bytes behind the counts, for a domain.
uint32_t domain(uint32_t number) { return number << 5; }

record unicast(uint32_t uuid, uint32_t rewrite, uint32_t flags, std::initializer_list<record> hops) {
    record route{uuid, 20, 0x010203, 0xffff00};
    route.byte(6).byte(0xff).byte(rewrite).byte(0xee).word(0xeeeeeeee);
    route.words({500, flags, static_cast<uint32_t>(hops.size())});
    for (const record &next : hops) {
        route.add(next);
    }
    return route;
}

record label_route(uint32_t uuid, uint32_t type, std::initializer_list<record> hops) {
    record route{uuid,    type,   20, 0x1010000, 0x010203, 0xffff00, 2, static_cast<uint32_t>(hops.size()),
                 0x11000, 0x22ffe};
    for (const record &next : hops) {
        route.add(next);
    }
    return route;
}

void show_unicast(uint32_t (*show)(uint32_t, const void *), uint32_t header, const record &route) {
    const uint32_t length = show(header, route.data());
    EXPECT_EQ(length, route.size());
}

void show_label(uint32_t header, uint32_t options, const record &route) {
    const uint32_t length = rib_show_fcl(header, options, route.data());
    EXPECT_EQ(length, route.size());
}

void every_unicast_case(uint32_t (*show)(uint32_t, const void *)) {
    label("header, no hops");
    show_unicast(show, 1, unicast(10, 0, 0xd, {}));
    label("any flag that is not 0 is a header");
    show_unicast(show, 0x80000000, unicast(28, 0x3f, 0, {}));
    label("domains of fspf");
    show_unicast(show, 0, unicast(12, 0x20, 0x5, {hop(0, domain(1), 0x1000), hop(9, domain(239), 0x2000)}));
    label("domains of rib-config and rib-test, the null interface");
    show_unicast(show, 0, unicast(39, 0x11, 0x8, {hop(0, domain(255) | 0x1f, 0)}));
    show_unicast(show, 0, unicast(64, 0x12, 0xffffffff, {hop(0, 0xe000, 0x1000)}));
    label("no domains of others");
    show_unicast(show, 0, unicast(14, 0x0f, 2, {hop(0, domain(7), 0x1000), hop(1, domain(8), 0x2000)}));
    label("labels, and a hop without any behind them");
    show_unicast(show, 0,
                 unicast(12, 0, 1,
                         {hop(1, 0xa000, 0x1000, {0x11000, 0x22fff, 0}), hop(2, domain(5), 0x2000),
                          hop(0, 0x4000, 0x3000, {0xffffffff})}));
    label("a client without a name");
    show_unicast(show, 0, unicast(4000000000, 0x1e, 1, {}));
}

} // namespace

TEST_F(ShowRoute, GoldenFcu) {
    expect_golden_output("rib_show_fcu", [] { every_unicast_case(rib_show_fcu); });
}

TEST_F(ShowRoute, GoldenFcurt) {
    expect_golden_output("rib_show_fcurt", [] { every_unicast_case(rib_show_fcurt); });
}

TEST_F(ShowRoute, GoldenFcl) {
    expect_golden_output("rib_show_fcl", [] {
        label("header, no hops");
        show_label(1, 0, label_route(13, 4, {}));
        label("labels and no labels; never a domain");
        const record route = label_route(
            39, 0, {hop(1, 0xa000, 0x1000, {0x11000, 0x22fff}), hop(0, domain(5), 0x2000), hop(0, 0x4000, 0, {7})});
        show_label(0, 0, route);
        label("options 0x10 and 0x100 hide the hops, others do not");
        show_label(0, 0x10, route);
        show_label(0, 0x100, route);
        show_label(0, 0xffffffff, route);
        show_label(0, 0xfffffeef, route);
        label("an unknown type");
        show_label(0, 0, label_route(66, 0x300, {}));
    });
}

TEST_F(ShowRoute, EveryDomain) {
    for (uint32_t number = 0; number < 256; ++number) {
        const record route = unicast(12, 0, 0, {hop(0, domain(number) | 0x1f, 5)});
        const std::string text = printed_by([&] { rib_show_fcu(0, route.data()); });
        const std::string line = "    if5  Domain  0x" + digits(number, 16, 2) + "(" + std::to_string(number) + ")\n";
        EXPECT_EQ(text.substr(text.find('\n') + 1), line);
    }
}

TEST_F(ShowRoute, AsManyLabelsAsAByteCounts) {
    record route = unicast(12, 0, 0, {});
    record many = record{}.byte(1).byte(255).half(0xa000).word(9);
    std::string words;
    std::string entries;
    for (uint32_t i = 0; i < 255; ++i) {
        const uint32_t label_word = i * 0x1234567;
        many.word(label_word);
        words += "  " + digits(label_word, 16, 8);
        entries += render("  {l@w0}", record{label_word}.data());
    }
    const record one_hop = record{12, 20, 0, 0}.fill_to(32).word(1).add(many);
    uint32_t length = 0;
    std::string text = printed_by([&] { length = rib_show_fcu(0, one_hop.data()); });
    EXPECT_EQ(length, one_hop.size());
    EXPECT_NE(text.find("\n    if9  Control  push=255 pop=1 use_UP=T use_TTL=F dec_TTL=T\n      Labels" + words + "\n"),
              std::string::npos);
    text = printed_by([&] { length = rib_show_fcurt(0, one_hop.data()); });
    EXPECT_EQ(length, one_hop.size());
    EXPECT_NE(text.find("\n    if9  Labels" + entries + "\n"), std::string::npos);
}

namespace {

struct view {
    bool domains;
    bool entries;
};

std::string second_hops(const uint8_t *at, uint32_t count, view how) {
    std::string text;
    for (; count != 0; --count, at += 4 * (size_t{at[1]} + 2)) {
        if (at[1] != 0) {
            text += render(how.entries ? "    {i0@w4}  Labels" : "    {i0@w4}  Control  {c@b0}\n      Labels", at);
            for (size_t i = 0; i < at[1]; ++i) {
                text += render(how.entries ? "  {l@w8}" : "  {x8@w8}", at + 4 * i);
            }
        } else if (how.domains) {
            text += render("    {i0@w4}  Domain  0x{x2&1fe0>5@h2}({d0&1fe0>5@h2})", at);
        } else {
            text += render("    {i0@w4}", at);
        }
        text += "\n";
    }
    return text;
}

bool has_domains(uint32_t uuid) { return uuid == 12 || uuid == 39 || uuid == 64; }

void add_hops(record &route, uint32_t count, random_fields &random) {
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t n_label = random.below(2) * random.below(40);
        route.byte(random.byte()).byte(n_label).byte(random.byte()).byte(random.byte()).word(random.word());
        route.add(random.words(n_label));
    }
}

} // namespace

TEST_F(ShowRoute, AgreesWithASecondFormatterOnRandomUnicastRoutes) {
    random_fields random(71);
    for (int i = 0; i < random_rounds; ++i) {
        const uint32_t n_hop = random.below(2) * random.below(6);
        record route = random.words(8).word(n_hop);
        add_hops(route, n_hop, random);
        const uint8_t *bytes = route.data();
        const bool domains = has_domains(word_at(bytes, 0));
        ASSERT_EQ(printed_by([&] { show_unicast(rib_show_fcu, 0, route); }),
                  render("{t10:rib_uuid@w0}  {d4@w4}  {x6@w8} {x6@w12}    {x2@b16} {x2@b17}    {f@w28}  {d4@w32}  "
                         "{d5@w24}  {T&20@b18}  {t12:fib_reason&1f@b18}\n",
                         bytes) +
                      second_hops(bytes + 36, n_hop, {domains, false}));
        ASSERT_EQ(
            printed_by([&] { show_unicast(rib_show_fcurt, 0, route); }),
            render("{t8:rib_uuid_to_proto@w0}  {d4@w4}    0x{x2@b9}{x2@b10}{x2@b11} 0x{x2@b13}{x2@b14}{x2@b15}    "
                   "0x{x2@b16} 0x{x2@b17}    {f@w28}  {d4@w32}  {d0@w24}\n",
                   bytes) +
                second_hops(bytes + 36, n_hop, {domains, true}));
    }
}

TEST_F(ShowRoute, AgreesWithASecondFormatterOnRandomLabelRoutes) {
    random_fields random(72);
    for (int i = 0; i < random_rounds; ++i) {
        const uint32_t n_hop = random.below(2) * random.below(6);
        record route = random.words(7).word(n_hop).add(random.words(2));
        add_hops(route, n_hop, random);
        const uint8_t *bytes = route.data();
        const uint32_t options = random.word();
        const bool hidden = (options & 0x10) != 0 || (options & 0x100) != 0;
        ASSERT_EQ(
            printed_by([&] { show_label(0, options, route); }),
            render("{t10:rib_uuid@w0} {t9:rib_route_type@w4} {d4@w8} {x6@w16} {x6@w20} {x8@w36} {x8@w32} {d2@w24} "
                   "{d2@w28} {i0@w12}\n",
                   bytes) +
                (hidden ? "" : second_hops(bytes + 40, n_hop, {false, false})));
    }
}
