// Of a failure operators get a sentence, every other client a trace with its numbers, cut at its buffer.
#include "rib_trace.h"
#include "testing/capture.h"
#include "testing/fake_clock.h"

#include <gtest/gtest.h>

using namespace ribkit::testing;

namespace {

using report = int32_t (*)(uint32_t, const char *, ...);

struct failure {
    report print;
    const char *sentence;
};

constexpr failure failures[] = {
    {rib_printf_req_fail, "Cannot communicate with RIB!\n"},     {rib_printf_rsp_fail, "No response from RIB!\n"},
    {rib_printf_fib_req_fail, "Cannot communicate with FIB!\n"}, {rib_printf_fib_rsp_fail, "No response from FIB!\n"},
    {rib_printf_drop_fail, "Failed IPC drop reference!\n"},      {rib_printf_no_mem, "Out of memory!\n"},
};

class Failures : public ::testing::Test {
    stopped_clock clock_{1700000000};
    local_zone zone_{"UTC0"};
};

} // namespace

TEST_F(Failures, OperatorsGetASentenceAndNothingElse) {
    for (const failure &kind : failures) {
        for (const uint32_t uuid : {39u, 66u}) {
            int32_t result = -1;
            const std::string text =
                printed_by([&] { result = kind.print(uuid, "rib_wrap_qip_send() %s %u!\n", "x", 5u); });
            EXPECT_EQ(text, kind.sentence);
            EXPECT_GE(result, 0);
        }
    }
}

TEST_F(Failures, EveryOtherClientGetsATraceWithoutItsIdentity) {
    for (const failure &kind : failures) {
        for (const uint32_t uuid : {0u, 12u, 38u, 40u, 65u, 67u, 0x10027u, 0x10042u, 0xffffffffu}) {
            int32_t result = -1;
            const std::string text =
                printed_by([&] { result = kind.print(uuid, "rib_wrap_qip_send() failed qip_send() %u!\n", 5u); });
            EXPECT_EQ(text, "22:13:20 rib_wrap_qip_send() failed qip_send() 5!\n");
            EXPECT_EQ(result, static_cast<int32_t>(text.size()));
        }
    }
}

TEST_F(Failures, ATraceAddsNoNewline) {
    int32_t result = -1;
    EXPECT_EQ(printed_by([&] { result = rib_printf_time("%s-%d", "one", -2); }), "22:13:20 one--2");
    EXPECT_EQ(result, 15);
    EXPECT_EQ(printed_by([] {
                  rib_printf_time("a");
                  rib_printf_time("100%%\n");
              }),
              "22:13:20 a22:13:20 100%\n");
}

TEST_F(Failures, LongLinesAreCutAtTheirBuffers) {
    for (const size_t length : {200u, 234u, 235u, 1000u}) {
        const std::string line(length, 'x');
        const std::string expected = ("22:13:20 " + line).substr(0, 243);
        EXPECT_EQ(printed_by([&] { rib_printf_time("%s", line.c_str()); }), expected);
    }
    for (const failure &kind : failures) {
        for (const size_t length : {146u, 147u, 1000u}) {
            const std::string line(length, 'x');
            const std::string expected = ("22:13:20 " + line).substr(0, 155);
            EXPECT_EQ(printed_by([&] { kind.print(12, "%s", line.c_str()); }), expected);
        }
    }
}
