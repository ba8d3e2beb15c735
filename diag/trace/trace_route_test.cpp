// Traces of updates and their routes, as kept outputs and against a second formatter.
#include "diag/show/show_fixture.h"
#include "rib_trace.h"

using namespace ribkit::diag;
using namespace ribkit::testing;

namespace {

class RouteTraces : public printing_test {};

const record from_fspf{12};

record unicast(uint32_t action, uint32_t flag, std::initializer_list<uint32_t> interfaces) {
    record route{0x010203, 0xffff00, 0xeeeeeeee, 0xeeeeeeee, action, 500, flag};
    route.word(static_cast<uint32_t>(interfaces.size()));
    for (const uint32_t if_index : interfaces) {
        route.words({if_index, 0xee});
    }
    return route;
}

record multicast(uint32_t action, std::initializer_list<uint32_t> interfaces) {
    return record{0xfffd01, 0xffffff, action, static_cast<uint32_t>(interfaces.size())}.words(interfaces);
}

record hop(uint32_t pop, uint32_t flags, uint32_t if_index, std::initializer_list<uint32_t> labels) {
    return record{}
        .byte(pop)
        .byte(static_cast<uint32_t>(labels.size()))
        .byte(flags)
        .byte(0xee)
        .word(if_index)
        .words(labels);
}

/// A label route: labels to match (two words of room), and next hops.
record label_route(uint32_t type, uint32_t n_match, std::initializer_list<record> hops) {
    record route{type,       20,        0x010203, 0xffff00, 0x100, n_match, 1, static_cast<uint32_t>(hops.size()),
                 0x00012345, 0xfffff9ff};
    route.word(0x7000).fill_to(104);
    for (const record &next : hops) {
        route.add(next);
    }
    return route;
}

} // namespace

TEST_F(RouteTraces, GoldenFcurt) {
    expect_golden_output("rib_printf_fcurt", [] {
        rib_printf_fcurt(from_fspf.data(), unicast(1, 0xd, {}).data());
        rib_printf_fcurt(from_fspf.data(), unicast(0xc, 0, {0x1000, 0, 0x2000}).data());
        rib_printf_fcurt(from_fspf.data(), unicast(3, 0xffffffff, {0xffffffff}).data());
        label("silent for operators");
        rib_printf_fcurt(record{39}.data(), unicast(1, 0xd, {1}).data());
        rib_printf_fcurt(record{66}.data(), unicast(1, 0xd, {1}).data());
    });
}

TEST_F(RouteTraces, GoldenFcmrt) {
    expect_golden_output("rib_printf_fcmrt", [] {
        rib_printf_fcmrt(from_fspf.data(), multicast(0x1000, {}).data());
        rib_printf_fcmrt(from_fspf.data(), multicast(2, {0x1000, 0, 0x2000}).data());
        label("silent for operators");
        rib_printf_fcmrt(record{39}.data(), multicast(1, {1}).data());
        rib_printf_fcmrt(record{66}.data(), multicast(1, {1}).data());
    });
}

TEST_F(RouteTraces, GoldenFclrt) {
    expect_golden_output("rib_printf_fclrt", [] {
        label("no FC ID, no labels, no hops");
        rib_printf_fclrt(from_fspf.data(), label_route(2, 0, {}).data());
        label("an FC ID and labels");
        rib_printf_fclrt(from_fspf.data(), label_route(4, 1, {}).data());
        rib_printf_fclrt(from_fspf.data(), label_route(4, 2, {}).data());
        label("a source interface");
        rib_printf_fclrt(from_fspf.data(), label_route(1, 1, {}).data());
        label("hops with and without labels");
        rib_printf_fclrt(from_fspf.data(), label_route(2, 1,
                                                       {hop(1, 0xa0, 0x1000, {0x11000, 0x22fff, 0x100}),
                                                        hop(2, 0, 0, {}), hop(0, 0x5f, 0x2000, {0xffffffff})})
                                               .data());
        label("silent for operators");
        rib_printf_fclrt(record{39}.data(), label_route(4, 2, {}).data());
        rib_printf_fclrt(record{66}.data(), label_route(4, 2, {}).data());
    });
}

TEST_F(RouteTraces, AgreesWithASecondFormatterOnRandomRoutes) {
    random_fields random(63);
    for (int i = 0; i < random_rounds; ++i) {
        const uint32_t count = random.below(2) * random.below(10);
        record ucast = random.words(7).word(count).add(random.words(size_t{2} * count));
        std::string text =
            render(" {t0:rib_action@w16} fc id 0x{x6@w0} mask 0x{x6@w4} metric {d0@w20} flag {f@w24} with "
                   "{d0@w28} interfaces\n",
                   ucast.data());
        for (size_t entry = 0; entry < count; ++entry) {
            text += render("  {i0@w32}\n", ucast.data() + 8 * entry);
        }
        ASSERT_EQ(printed_by([&] { rib_printf_fcurt(from_fspf.data(), ucast.data()); }), text);

        record mcast = random.words(3).word(count).add(random.words(count));
        text = render(" {t0:rib_action@w8} fc id 0x{x6@w0} mask 0x{x6@w4} with {d0@w12} interfaces\n", mcast.data());
        for (size_t entry = 0; entry < count; ++entry) {
            text += render("  {i0@w16}\n", mcast.data() + 4 * entry);
        }
        ASSERT_EQ(printed_by([&] { rib_printf_fcmrt(from_fspf.data(), mcast.data()); }), text);
    }
}

TEST_F(RouteTraces, AgreesWithASecondFormatterOnRandomLabelRoutes) {
    random_fields random(64);
    for (int i = 0; i < random_rounds; ++i) {
        const uint32_t type = random.below(6);
        const uint32_t n_match = random.below(3);
        const uint32_t n_hop = random.below(2) * random.below(6);
        record route{type};
        route.add(random.words(4)).words({n_match, random.word(), n_hop}).add(random.words(18));
        std::string text = render(" {t0:rib_action@w16}", route.data()) +
                           (type == 4 ? render(" fc id 0x{x6@w8} mask 0x{x6@w12}", route.data()) : "") +
                           (n_match > 0 ? render(" {l@w32}", route.data()) : "") +
                           (n_match > 1 ? render(" {l@w36}", route.data()) : "") +
                           (type == 1 ? render(" {i0@w40}", route.data()) : "") +
                           render(" with {d0@w28} interfaces\n", route.data());
        for (uint32_t next = 0; next < n_hop; ++next) {
            const uint32_t n_label = random.below(2) * random.below(30);
            const record one =
                record{}.byte(random.byte()).byte(n_label).half(random.word()).add(random.words(1 + n_label));
            text += render("  {i0@w4} Control {c@b0}\n   push {d0@b1} labels", one.data());
            for (size_t entry = 0; entry < n_label; ++entry) {
                text += render(" {l@w8}", one.data() + 4 * entry);
            }
            text += "\n";
            route.add(one);
        }
        ASSERT_EQ(printed_by([&] { rib_printf_fclrt(from_fspf.data(), route.data()); }), text);
    }
}
