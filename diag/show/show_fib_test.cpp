// The displays of what modules hold, as kept outputs and against a second formatter.
#include "diag/show/show_fixture.h"
#include "diag/text/expected_texts.h"
#include "rib_show.h"

using namespace ribkit::diag;
using namespace ribkit::testing;

namespace {

class ShowFib : public printing_test {};

record vsan(uint32_t latency, uint32_t flags, uint32_t state, uint32_t number) {
    return record{latency}.byte(flags).byte(state).half(number);
}

record port(uint32_t flags, uint32_t d_idx, uint32_t if_index, uint32_t mode, uint32_t iod) {
    return record{}.byte(1).byte(2).byte(3).byte(4).byte(1).byte(flags).half(d_idx).words({if_index, mode, 20, iod});
}

record node(uint32_t slot, uint32_t type, uint32_t sup_state, uint32_t fib_state) {
    return record{}.byte(slot).byte(type).byte(sup_state).byte(0xee).half(32).half(0x0401).words({0xff0401, fib_state});
}

} // namespace

TEST_F(ShowFib, GoldenVerf) {
    expect_golden_output("fib_show_verf_fcu", [] {
        label("header");
        fib_show_verf_fcu(1, record{0, 20, 0x010203, 0xffff00}.data());
        label("every status, and two at once");
        for (uint32_t status = 1; status <= 0x1000; status <<= 1) {
            fib_show_verf_fcu(0, record{status, 4095, 0xffffff, 0xffffff}.data());
        }
        fib_show_verf_fcu(0, record{3, 0, 0, 0}.data());
    });
    expect_golden_output("fib_show_verf_fcm", [] {
        label("header");
        fib_show_verf_fcm(1, record{0x10, 20, 0xfffd01}.data());
        label("no header");
        fib_show_verf_fcm(0, record{0x30, 4095, 0}.data());
    });
    expect_golden_output("fib_show_verf_fcl", [] {
        label("header");
        fib_show_verf_fcl(1, record{0x200, 20, 9, 9, 9, 2, 0x11000, 0x22fff}.data());
        label("no header, no labels counted");
        fib_show_verf_fcl(0, record{0, 4095, 9, 9, 9, 0, 0xffffffff, 1}.data());
    });
}

TEST_F(ShowFib, GoldenVsan) {
    expect_golden_output("fib_show_vsan", [] {
        label("header");
        fib_show_vsan(1, vsan(500, 0x03, 0x21, 10).data());
        label("in-order delivery not configured, interop mode 4");
        fib_show_vsan(0, vsan(500, 0x05, 0x12, 4095).data());
        label("vsan 0 balances nothing and always tells its in-order delivery");
        fib_show_vsan(0, vsan(500, 0x01, 0x21, 0).data());
        fib_show_vsan(0, vsan(4294967295, 0xf8, 0x10, 0).data());
        label("every flag byte");
        for (uint32_t flags = 0; flags < 8; ++flags) {
            fib_show_vsan(0, vsan(0, flags, 0x14, 1).data());
        }
        label("unknown texts");
        fib_show_vsan(0, vsan(0, 0xff, 0xff, 65535).data());
    });
}

TEST_F(ShowFib, GoldenPort) {
    expect_golden_output("fib_show_port", [] {
        label("header");
        fib_show_port(1, port(0, 5, 0x1000000, 4, 1).data());
        label("only the top bit is a bundle's");
        fib_show_port(0, port(0x80, 0xffff, 0, 0xffff, 6).data());
        fib_show_port(0, port(0x7f, 0x1234, 1, 0x88000, 7).data());
        label("every mode");
        for (uint32_t mode = 1; mode != 0; mode <<= 1) {
            fib_show_port(0, port(0, 5, 1, mode, 0).data());
        }
        fib_show_port(0, port(0, 5, 1, 0, 0).data());
        label("long interface names are cut");
        interfaces() = {1, 0, std::string("-of-a-long-name")};
        fib_show_port(0, port(0, 5, 0x1000000, 1, 0).data());
        interfaces() = {81, 0, std::string()};
        fib_show_port(0, port(0, 5, 0x1000000, 1, 0).data());
        interfaces() = {};
        label("the widest values");
        fib_show_port(0, record{0xffffffff, 0xffffffff, 0xffffffff, 0xffffffff, 0xffffffff, 0xffffffff}.data());
    });
}

TEST_F(ShowFib, GoldenNode) {
    expect_golden_output("fib_show_node", [] {
        label("header");
        fib_show_node(1, node(0, 0, 1, 4).data());
        label("supervisors have a state, others have not");
        for (const uint32_t type : {1, 2, 3, 4, 5, 255}) {
            fib_show_node(0, node(255, type, 2, 0).data());
        }
        label("unknown states");
        fib_show_node(0, node(5, 1, 3, 8).data());
        label("the widest values");
        fib_show_node(0, record{0xff01ffff, 0xffffffff, 0xffffffff, 0xffffffff}.data());
    });
}

TEST_F(ShowFib, AgreesWithASecondFormatterOnRandomRecords) {
    random_fields random(80);
    for (int i = 0; i < random_rounds; ++i) {
        const record of = random.words(8);
        const uint8_t *bytes = of.data();
        ASSERT_EQ(printed_by([&] { fib_show_verf_fcu(0, bytes); }),
                  render("{d4@w4}    {x6@w8} {x6@w12}    {t0:fib_verf@w0}\n", bytes));
        ASSERT_EQ(printed_by([&] { fib_show_verf_fcm(0, bytes); }),
                  render("{d4@w4}    {x6@w8}       {t0:fib_verf@w0}\n", bytes));
        ASSERT_EQ(printed_by([&] { fib_show_verf_fcl(0, bytes); }),
                  render("{d4@w4}    {d8@w20}    {x8@w24}       {x8@w28}       {t0:fib_verf@w0}\n", bytes));
        ASSERT_EQ(printed_by([&] { fib_show_node(0, bytes); }),
                  digits(bytes[0] + 1U, 10) +
                      std::string(bytes[0] < 9    ? 5
                                  : bytes[0] < 99 ? 4
                                                  : 3,
                                  ' ') +
                      render("  {X4@h6}  {X7@w8}  {t9:rib_mod_type@b1}  {d5@h4}  ", bytes) +
                      (bytes[1] == 1 ? render("{t12:rib_mod_state@b2}", bytes) : std::string(12, ' ')) +
                      render("  {t0:fib_state@w12}\n", bytes));
    }
}

TEST_F(ShowFib, AgreesWithASecondFormatterOnRandomVsansAndPorts) {
    random_fields random(81);
    for (int i = 0; i < random_rounds; ++i) {
        const record of = vsan(random.word(), random.byte(), random.byte(), random.below(3) * random.below(5000));
        const uint8_t *bytes = of.data();
        const bool all = bytes[6] == 0 && bytes[7] == 0;
        ASSERT_EQ(printed_by([&] { fib_show_vsan(0, bytes); }),
                  render("{d4@h6}    {t9:rib_vsan_state&f@b5}    ", bytes) +
                      (all ? std::string(12, ' ') : render("{t12:rib_vsan_bal&f0>4@b5}", bytes)) +
                      render("    {d13@w0}    ", bytes) +
                      (all || bytes[4] / 2 % 2 != 0 ? render("{t8:rib_vsan_iod&1@b4}", bytes) : std::string(8, ' ')) +
                      render("   {d13&4>2@b4}\n", bytes));

        constexpr uint32_t single_modes[] = {0, 1, 2, 4, 0x20, 0x2000, 0x4000, 0x8000, 0x80000};
        constexpr const char *mode_texts[] = {"unknown ", "auto    ", "SD      ", "E       ", "F       ",
                                              "Diag    ", "4000h?? ", "ST      ", "FA      "};
        const size_t mode = random.below(std::size(single_modes));
        const record ports = random.words(3).word(single_modes[mode]).add(random.words(2));
        ASSERT_EQ(printed_by([&] { fib_show_port(0, ports.data()); }),
                  render("{t0:fib_d_idx@h6} {i16@w8} ", ports.data()) + mode_texts[mode] +
                      render(" {t8:rib_pm_state@b4} {d4@w16} {d4@b0} {d4@b1} {d4@b2} {d4@b3} {T&80@b5} "
                             "{t0:fib_iod_mode@w20}\n",
                             ports.data()));
    }
}
