// The displays of the synchronisation logs, markers included, as kept outputs and against a second formatter.
#include "diag/show/show_fixture.h"
#include "rib_show.h"

using namespace ribkit::diag;
using namespace ribkit::testing;

namespace {

using display = void (*)(uint32_t, const void *);

class ShowSync : public printing_test {};

constexpr uint32_t marker = 128;
constexpr uint32_t moment = 1700000000;

/// The five words that the three logs share, and the log's own.
record entry(uint32_t index, uint32_t oper, uint32_t action, std::initializer_list<uint32_t> own) {
    return record{index, 0xabc, moment, oper, action}.words(own);
}

std::string shown(display show, const record &of) {
    return printed_by([&] { show(0, of.data()); });
}

} // namespace

TEST_F(ShowSync, GoldenFcu) {
    expect_golden_output("rib_show_sync_fcu", [] {
        label("header");
        rib_show_sync_fcu(1, entry(0, 1, 1, {20, 0x010203, 0xffff00}).data());
        label("long texts are cut");
        rib_show_sync_fcu(0, entry(127, 0x8000, 0, {4095, 0xfffffd, 0xffffff}).data());
        label("marker, with and without header");
        rib_show_sync_fcu(0, entry(marker, 5, 1, {20, 0x010203, 0xffff00}).data());
        rib_show_sync_fcu(1, entry(marker, 0xffffffff, 1, {20, 0x010203, 0xffff00}).data());
        label("next to the marker's index");
        rib_show_sync_fcu(0, entry(129, 3, 9, {0, 0, 0}).data());
    });
}

TEST_F(ShowSync, GoldenFcm) {
    expect_golden_output("rib_show_sync_fcm", [] {
        label("header");
        rib_show_sync_fcm(1, entry(0, 0x20, 2, {20, 0xfffd01}).data());
        label("marker");
        rib_show_sync_fcm(0, entry(marker, 5, 1, {20, 0x010203}).data());
        label("unknown texts");
        rib_show_sync_fcm(0, entry(1000, 3, 9, {4095, 0}).data());
    });
}

TEST_F(ShowSync, GoldenFcl) {
    expect_golden_output("rib_show_sync_fcl", [] {
        label("header");
        rib_show_sync_fcl(1, entry(0, 2, 1, {4, 20, 0x010203, 0xffff00, 0xeeeeeeee, 0x11000, 0x22fff, 0x1000}).data());
        label("marker");
        rib_show_sync_fcl(0, entry(marker, 5, 1, {4, 20, 0x010203, 0xffff00, 0, 0x11000, 0x22fff, 0x1000}).data());
        label("the null interface, and a type that is unknown by name");
        rib_show_sync_fcl(0, entry(1, 0x400, 3, {0, 4095, 0, 0, 0, 0, 0xffffffff, 0}).data());
    });
}

TEST_F(ShowSync, GoldenGbl) {
    expect_golden_output("rib_show_sync_gbl", [] {
        label("header");
        rib_show_sync_gbl(1, record{1, 0xabc, moment, 2}.data());
        label("the widest values");
        rib_show_sync_gbl(0, record{0xffffffff, 0xffffffff, 0, 0xffffffff}.data());
        label("128 marks nothing here");
        rib_show_sync_gbl(0, record{marker, 0, 0x7fffffff, marker}.data());
    });
}

// Where the host can tell them, times go on behind 2038: the words of a record have no sign.
TEST_F(ShowSync, TimesBehind2038) {
    if constexpr (sizeof(time_t) > 4) {
        EXPECT_EQ(shown(rib_show_sync_gbl, record{1, 2, 0x80000000, 3}),
                  "1       00000002    3       Tue Jan 19 03:14:08 2038\n");
        EXPECT_EQ(shown(rib_show_sync_gbl, record{1, 2, 0xffffffff, 3}),
                  "1       00000002    3       Sun Feb  7 06:28:15 2106\n");
    }
}

TEST_F(ShowSync, AgreesWithASecondFormatterOnRandomEntries) {
    random_fields random(77);
    for (int i = 0; i < random_rounds; ++i) {
        const record of = random.words(2).word(random.time()).add(random.words(10));
        const uint8_t *bytes = of.data();
        const bool marks = word_at(bytes, 0) == marker;
        const std::string common = "{t6:fib_oper@w12}  {t6:fib_action@w16}";
        ASSERT_EQ(shown(rib_show_sync_fcu, of),
                  render(marks ? "{d3@w0}  {x8@w4}  {d35@w12}  {m@w8}\n"
                               : "{d3@w0}  {x8@w4}  " + common + "  {d4@w20}  {x6@w24} {x6@w28}  {m@w8}\n",
                         bytes));
        ASSERT_EQ(shown(rib_show_sync_fcm, of),
                  render(marks ? "{d3@w0}  {x8@w4}  {d28@w12}  {m@w8}\n"
                               : "{d3@w0}  {x8@w4}  " + common + "  {d4@w20}  {x6@w24}  {m@w8}\n",
                         bytes));
        ASSERT_EQ(shown(rib_show_sync_fcl, of),
                  render(marks
                             ? "{d3@w0} {x8@w4} {d0@w12}\n  {m@w8}\n"
                             : "{d3@w0} {x8@w4} {t6:fib_oper@w12} {t6:fib_action@w16} {t9:rib_route_type@w20} {d4@w24} "
                               "{x6@w28} {x6@w32} {x8@w40} {x8@w44}\n  {m@w8} {i0@w48}\n",
                         bytes));
        ASSERT_EQ(shown(rib_show_sync_gbl, of), render("{d4@w0}    {x8@w4}    {d4@w12}    {m@w8}\n", bytes));
    }
}
