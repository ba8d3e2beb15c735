// Times as texts, under a stopped clock and in time zones of the test's choice.
#include "rib_text.h"
#include "rib_tunables.h"
#include "testing/fake_clock.h"
#include "testing/fake_if_index.h"
#include "testing/guarded.h"

#include <gtest/gtest.h>
#include <random>

using namespace ribkit::testing;

namespace {

constexpr time_t noon = 1700000000; // 2023-11-14 22:13:20 UTC
constexpr const char *paris = "CET-1CEST,M3.5.0,M10.5.0/3";

std::string stamp() {
    const guarded buffer{9};
    EXPECT_EQ(rib_time_stamp_str(reinterpret_cast<char *>(buffer.data())), 8);
    return reinterpret_cast<const char *>(buffer.data());
}

std::string within_minute() {
    const guarded buffer{12};
    EXPECT_EQ(rib_time_str(reinterpret_cast<char *>(buffer.data())), 11);
    return reinterpret_cast<const char *>(buffer.data());
}

std::string calendar(time_t when) {
    const guarded buffer{26};
    rib_time_to_str(&when, reinterpret_cast<char *>(buffer.data()));
    return reinterpret_cast<const char *>(buffer.data());
}

std::string interface(uint32_t if_index, size_t room) {
    const guarded buffer{room};
    rib_if_index_to_str(if_index, reinterpret_cast<char *>(buffer.data()));
    return reinterpret_cast<const char *>(buffer.data());
}

/// What the interface service answers while this lives.
class service_says {
  public:
    explicit service_says(uint8_t type, int result = 0, std::string suffix = {}) {
        interfaces() = {type, result, std::move(suffix)};
    }
    service_says(const service_says &) = delete;
    service_says &operator=(const service_says &) = delete;
    ~service_says() { interfaces() = {}; }
};

std::string padded(const std::string &text, int width) {
    const guarded buffer{41};
    char *str = reinterpret_cast<char *>(buffer.data());
    text.copy(str, text.size());
    str[text.size()] = '\0';
    rib_str_len_set(str, width);
    return str;
}

} // namespace

TEST(TimeText, MicrosecondsWithinTheMinute) {
    const std::tuple<time_t, long, const char *> cases[] = {{noon - 20 + 14, 250007, "014:250:007"},
                                                            {noon - 20 + 59, 999999, "059:999:999"},
                                                            {noon - 20, 0, "000:000:000"},
                                                            {noon - 20 + 60, 1000, "000:001:000"}};
    for (const auto &[seconds, micro, text] : cases) {
        const stopped_clock clock(seconds, micro);
        EXPECT_EQ(within_minute(), text);
    }
}

TEST(TimeText, StampIsLocal) {
    const stopped_clock clock(noon);
    {
        const local_zone zone("UTC0");
        EXPECT_EQ(stamp(), "22:13:20");
    }
    const local_zone zone(paris);
    EXPECT_EQ(stamp(), "23:13:20");
    const stopped_clock morning(1690009503);
    EXPECT_EQ(stamp(), "09:05:03");
}

TEST(TimeText, CalendarWithoutNewline) {
    {
        const local_zone zone("UTC0");
        EXPECT_EQ(calendar(noon), "Tue Nov 14 22:13:20 2023");
        EXPECT_EQ(calendar(0), "Thu Jan  1 00:00:00 1970");
        EXPECT_EQ(calendar(2147483647), "Tue Jan 19 03:14:07 2038");
        EXPECT_EQ(calendar(-1), "Wed Dec 31 23:59:59 1969");
    }
    const local_zone zone(paris);
    EXPECT_EQ(calendar(noon), "Tue Nov 14 23:13:20 2023");
    EXPECT_EQ(calendar(1690009503), "Sat Jul 22 09:05:03 2023");
}

// Where no TZ names the zone, its file is looked at once a second; a TZ that comes, changes or goes is seen at once.
TEST(TimeText, TheZoneIsLookedAtOnceASecond) {
    const local_zone restored("UTC0");
    unsetenv("TZ");
    const std::string here = std::string(ctime(&noon)).substr(0, 24);
    for (const time_t second : {noon, noon + 1, noon}) {
        const stopped_clock clock(second);
        const int looks = zone_looks();
        for (int i = 0; i < 10; ++i) {
            EXPECT_EQ(calendar(noon), here);
            EXPECT_EQ(stamp(), std::string(ctime(&second)).substr(11, 8));
        }
        EXPECT_EQ(zone_looks(), looks + 1);
    }
}

TEST(TimeText, AnotherZoneIsSeenAtOnce) {
    const stopped_clock clock(noon);
    const local_zone restored("UTC0");
    for (int i = 0; i < 2; ++i) {
        unsetenv("TZ");
        const std::string here = std::string(ctime(&noon)).substr(0, 24);
        EXPECT_EQ(calendar(noon), here);
        setenv("TZ", "EAST-14", 1);
        EXPECT_EQ(calendar(noon), "Wed Nov 15 12:13:20 2023");
        EXPECT_EQ(stamp(), "12:13:20");
        setenv("TZ", "WEST12", 1);
        EXPECT_EQ(calendar(noon), "Tue Nov 14 10:13:20 2023");
        unsetenv("TZ");
        EXPECT_EQ(calendar(noon), here);
        EXPECT_EQ(calendar(noon), here);
    }
}

TEST(TimeText, IsWhatTheLibrarySaysWithoutItsNewline) {
    std::mt19937 random(56);
    for (const char *place : {"UTC0", paris, "EAST-14", "WEST12"}) {
        const local_zone zone(place);
        for (int i = 0; i < 2000; ++i) {
            const auto when = static_cast<time_t>(static_cast<int32_t>(random()));
            const std::string text = std::string(ctime(&when));
            ASSERT_EQ(calendar(when) + "\n", text) << place << when;
        }
    }
}

TEST(TimeText, YearsOfTwoAndThreeAndFiveDigits) {
    if constexpr (sizeof(time_t) > 4) {
        const local_zone zone("UTC0");
        for (const int64_t when : {-30641760000LL, -30610224000LL, -60000000000LL, -62100000000LL, 253402300799LL}) {
            const auto wide = static_cast<time_t>(when);
            ASSERT_EQ(calendar(wide) + "\n", ctime(&wide)) << when;
        }
        EXPECT_EQ(calendar(static_cast<time_t>(60000000000000000)), "Sat May 29 10:40:00 19013") << "cut";
        EXPECT_EQ(calendar(static_cast<time_t>(67768036191676799)), "") << "a year that asctime does not write";
        EXPECT_EQ(calendar(static_cast<time_t>(67768036191676800)), "") << "no calendar year";
    }
}

TEST(TimeText, NoCalendarOfTheLibraryIsLongerThanTheBuffer) {
    if constexpr (sizeof(time_t) > 4) {
        const local_zone zone("UTC0");
        EXPECT_EQ(calendar(static_cast<time_t>(253402300799)), "Fri Dec 31 23:59:59 9999");
        EXPECT_EQ(calendar(static_cast<time_t>(253402300800)), "Sat Jan  1 00:00:00 10000") << "25 characters";
        EXPECT_EQ(calendar(static_cast<time_t>(0x7fffffffffffffff)), "") << "no calendar year";
    }
}

TEST(InterfaceText, NullInterface) {
    const service_says before(1);
    EXPECT_EQ(interface(0, 10), "null intf");
    const service_says unknown(81);
    EXPECT_EQ(interface(0, 10), "null intf") << "whatever the service says";
}

TEST(InterfaceText, TheServiceIsAskedForThisIndex) {
    const service_says known(80);
    for (const uint32_t if_index : {1u, 0x1a2b3c4u, 0xffffffffu}) {
        interface(if_index, 11);
        EXPECT_EQ(interfaces().asked, if_index);
    }
}

TEST(InterfaceText, TheTypeAloneDecides) {
    {
        const service_says known(80, -1);
        EXPECT_EQ(interface(0x1a2b3c4, 12), "if1a2b3c4") << "the service's result is not examined";
    }
    {
        const service_says unknown(81);
        EXPECT_EQ(interface(0x1a2b3c4, 12), "01a2b3c4h??");
    }
    const service_says unknown(255);
    EXPECT_EQ(interface(0xffffffff, 12), "ffffffffh??");
}

TEST(InterfaceText, OneNewlineIsCut) {
    {
        const service_says one(1, 0, "\n");
        EXPECT_EQ(interface(7, 5), "if7");
    }
    {
        const service_says two(1, 0, "\n\n");
        EXPECT_EQ(interface(7, 6), "if7\n");
    }
    const service_says inside(1, 0, "\nx");
    EXPECT_EQ(interface(7, 6), "if7\nx");
}

TEST(ColumnWidth, CutsAndPads) {
    EXPECT_EQ(padded("abc", 6), "abc   ");
    EXPECT_EQ(padded("abcdefgh", 4), "abcd");
    EXPECT_EQ(padded("abcd", 4), "abcd");
    EXPECT_EQ(padded("", 3), "   ");
    EXPECT_EQ(padded("abc", 0), "");
    EXPECT_EQ(padded("abc", 50), std::string("abc").append(37, ' '));
    EXPECT_EQ(padded("abc", 40), std::string("abc").append(37, ' '));
    EXPECT_EQ(padded(std::string(40, 'y'), 39), std::string(39, 'y'));
    for (int width = 0; width <= 45; ++width) {
        for (size_t length = 0; length <= 40; ++length) {
            std::string text(length, 'x');
            const std::string before = text;
            text.resize(static_cast<size_t>(width < 40 ? width : 40), ' ');
            EXPECT_EQ(padded(before, width), text);
        }
    }
}

// A negative width is the caller's fault, and writes before the text.
TEST(ColumnWidth, NegativeWidthTerminatesBeforeTheText) {
    char text[] = "__abc";
    rib_str_len_set(text + 2, -1);
    EXPECT_EQ(std::string(text, 5), std::string("_\0abc", 5));
}

TEST(Tunables, AsInitialised) {
    EXPECT_EQ(rib_dyn_mcast_lc_opt[0], 1u);
    EXPECT_EQ(rib_dyn_mcast_lc_opt[1], 1u);
    EXPECT_EQ(rib_dyn_mcast_lc_opt[2], 0u);
    EXPECT_EQ(rib_dyn_mcast_lc_node, 0xff000401u);
}
