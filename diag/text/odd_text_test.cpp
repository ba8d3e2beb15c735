// The texts that no table holds: capital letters, port modes, label control words, route flags, VSANs.
#include "diag/text/expected_texts.h"
#include "rib_text.h"
#include "testing/guarded.h"
#include "testing/record.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>

using namespace ribkit::diag;
using namespace ribkit::testing;

namespace {

/// The converted text, made in a buffer of exactly `room` bytes.
template <typename Converter, typename Value> std::string made(Converter *convert, Value value, size_t room) {
    const guarded buffer{room};
    convert(value, reinterpret_cast<char *>(buffer.data()));
    return reinterpret_cast<const char *>(buffer.data());
}

std::string mode(uint32_t value) {
    char text[RIB_TEXT_SIZE];
    const uintptr_t result = rib_pm_mode_to_str(value, text);
    const bool known = std::strstr(text, "??") == nullptr;
    EXPECT_EQ(result, known ? reinterpret_cast<uintptr_t>(text) : std::strlen(text)) << value;
    return text;
}

std::string control(const record &bytes) { return made(rib_fclrt_ctrl_to_str, bytes.data(), 48); }

std::string vsan(uint32_t latency, uint32_t flags, uint32_t state, uint32_t number) {
    const record bytes = record{}.word(latency).byte(flags).byte(state).half(number);
    char text[128];
    const int printed = fib_vsan_to_str(bytes.data(), text);
    EXPECT_EQ(printed, static_cast<int>(std::strlen(text)));
    return text;
}

} // namespace

TEST(UpperCase, OfNamesAndNumbers) {
    EXPECT_EQ(made(rib_uuid_to_uc_str, 28u, 21), "PORT CHANNEL MANAGER");
    EXPECT_EQ(made(rib_uuid_to_uc_str, 39u, 11), "RIB-CONFIG");
    EXPECT_EQ(made(rib_uuid_to_uc_str, 500u, 13), "CLIENT 500??");
    for (const auto &[uuid, name] : expected("rib_uuid").rows) {
        std::string upper;
        for (const char c : name) {
            upper += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
        }
        EXPECT_EQ(made(rib_uuid_to_uc_str, uuid, upper.size() + 1), upper);
    }
}

TEST(PortMode, FirstBitInTheOrderWins) {
    const std::pair<uint32_t, const char *> order[] = {{0x1, "auto"},   {0x2, "SD"},         {0x4, "E"},
                                                       {0x8, "TE"},     {0x10, "TL"},        {0x20, "F"},
                                                       {0x40, "FL"},    {0x80, "FL-NPD"},    {0x100, "FL-NPO"},
                                                       {0x200, "IPS"},  {0x400, "FV"},       {0x800, "EV"},
                                                       {0x1000, "TEM"}, {0x2000, "Diag"},    {0x80000, "FA"},
                                                       {0x8000, "ST"},  {0x10000, "tunnel"}, {0x80000000, "default"}};
    uint32_t earlier = 0;
    for (const auto &[bit, text] : order) {
        EXPECT_EQ(mode(bit), text);
        EXPECT_EQ(mode(0xffffffff & ~earlier), text) << "among all bits that come later";
        EXPECT_EQ(mode(bit | 0x40164000), text) << "among bits without a text";
        earlier |= bit;
    }
    EXPECT_EQ(mode(~earlier), digits(~earlier, 16) + "h??");
}

TEST(PortMode, WholeValues) {
    EXPECT_EQ(mode(0), "unknown");
    EXPECT_EQ(mode(0xffff), "all") << "before any bit";
    EXPECT_EQ(mode(0x1ffff), "auto");
    EXPECT_EQ(mode(0xfffe), "SD");
    EXPECT_EQ(mode(0x3), "auto");
    EXPECT_EQ(mode(0x6), "SD");
    EXPECT_EQ(mode(0x88000), "FA") << "the exception in the order";
    EXPECT_EQ(mode(0x98000), "FA");
    EXPECT_EQ(mode(0x18000), "ST");
    EXPECT_EQ(mode(0x80080000), "FA");
    for (const uint32_t nameless : {0x4000u, 0x20000u, 0x40000u, 0x100000u, 0x40000000u, 0x7ff64000u}) {
        EXPECT_EQ(mode(nameless), digits(nameless, 16) + "h??");
    }
}

TEST(LabelControl, PushIsTheSecondByteAndComesFirst) {
    EXPECT_EQ(control(record{}.byte(1).byte(2).byte(0xa0)), "push=2 pop=1 use_UP=T use_TTL=F dec_TTL=T");
    EXPECT_EQ(control(record{}.byte(255).byte(200).byte(0x40)), "push=200 pop=255 use_UP=F use_TTL=T dec_TTL=F");
    EXPECT_EQ(control(record{}.byte(0).byte(0).byte(0x1f)), "push=0 pop=0 use_UP=F use_TTL=F dec_TTL=F");
}

TEST(LabelControl, EveryByte) {
    for (uint32_t byte = 0; byte < 256; ++byte) {
        const record bytes = record{}.byte(byte).byte(255 - byte).byte(byte);
        const auto truth = [byte](uint32_t bit) { return (byte & bit) != 0 ? "T" : "F"; };
        const std::string text = "push=" + std::to_string(255 - byte) + " pop=" + std::to_string(byte) +
                                 " use_UP=" + truth(0x80) + " use_TTL=" + truth(0x40) + " dec_TTL=" + truth(0x20);
        const guarded buffer{text.size() + 1};
        EXPECT_EQ(rib_fclrt_ctrl_to_str(bytes.data(), reinterpret_cast<char *>(buffer.data())),
                  static_cast<int>(text.size()));
        EXPECT_STREQ(reinterpret_cast<const char *>(buffer.data()), text.c_str());
    }
}

TEST(UnicastFlag, ThreeLetters) {
    const std::pair<uint32_t, const char *> cases[] = {
        {0, "R P N"},   {0x1, "D P N"}, {0x4, "R V N"}, {0x5, "D V N"}, {0x8, "R P A"},        {0x9, "D P A"},
        {0xc, "R V A"}, {0xd, "D V A"}, {0x2, "R P N"}, {0xf, "D V A"}, {0xfffffff2, "R P N"}, {0xffffffff, "D V A"}};
    for (const auto &[flags, text] : cases) {
        const guarded buffer{6};
        EXPECT_EQ(rib_fcurt_flag_to_str(flags, reinterpret_cast<char *>(buffer.data())), 5);
        EXPECT_STREQ(reinterpret_cast<const char *>(buffer.data()), text) << flags;
    }
}

TEST(VsanRecord, Sentences) {
    EXPECT_EQ(vsan(500, 0x03, 0x21, 10), "vsan 10 is active with enabled IOD, latency 500 msec and SID/DID/OXID");
    EXPECT_EQ(vsan(500, 0x02, 0x12, 10), "vsan 10 is suspended with disabled IOD, latency 500 msec and SID/DID");
    EXPECT_EQ(vsan(500, 0x01, 0x21, 10), "vsan 10 is active with invalid IOD, latency 500 msec and SID/DID/OXID");
    EXPECT_EQ(vsan(4294967295, 0xfe, 0xf5, 65535),
              "vsan 65535 is 5h?? with disabled IOD, latency 4294967295 msec and fh??");
    EXPECT_EQ(vsan(500, 0x02, 0x11, 256), "vsan 256 is active with disabled IOD, latency 500 msec and SID/DID");
    for (const uint32_t state : {0x00u, 0x21u, 0xffu}) {
        EXPECT_EQ(vsan(500, 0x00, state, 0), "disabled IOD with latency 500 msec for all vsans");
        EXPECT_EQ(vsan(500, 0x02, state, 0), "disabled IOD with latency 500 msec for all vsans");
        EXPECT_EQ(vsan(500, 0x03, state, 0), "enabled IOD with latency 500 msec for all vsans");
    }
}
