// The displays of the RIB's own state, as kept outputs and against a second formatter.
#include "diag/show/show_fixture.h"
#include "diag/text/expected_texts.h"
#include "rib_show.h"

#include <algorithm>
#include <cstring>

using namespace ribkit::diag;
using namespace ribkit::testing;

namespace {

class ShowState : public printing_test {};

constexpr uint32_t created = 1600000000;
constexpr uint32_t modified = 1700000000;

void show_versions(uint32_t count) {
    for (uint32_t position = 0; position < count; ++position) {
        rib_show_version(0xa0 + position, position, count);
    }
}

std::string second_versions(uint32_t count) {
    std::string text = " topology version";
    for (uint32_t position = 0; position < count; ++position) {
        const bool breaks = position == 0 ? count > 5 : position % 8 == 0 && position + 1 != count;
        text += breaks ? "\n " : position == 0 ? " " : "";
        text += digits(0xa0 + position, 16, 8);
        text += position != 0 && position + 1 == count ? "\n" : " ";
    }
    return text;
}

record port(uint32_t number) {
    return record{}.byte(1).byte(2).byte(number).byte(0).byte(1).byte(0).half(number).words({number + 1, 4, 20, 0});
}

/// A module entry: node record, bitmap, all 64 port records.
record module(std::initializer_list<uint32_t> present) {
    std::vector<uint32_t> bits(8);
    for (const uint32_t at : present) {
        bits[at / 8] |= 1U << at % 8;
    }
    record entry = record{}.fill_to(16);
    for (const uint32_t byte : bits) {
        entry.byte(byte);
    }
    for (uint32_t number = 0; number < 64; ++number) {
        entry.add(port(number));
    }
    EXPECT_EQ(entry.size(), 1560u);
    return entry;
}

/// The printed addresses differ from run to run: they are replaced by what they point to.
std::string without_addresses(std::string text, const rib_param_block &block) {
    for (uint32_t i = 0; i < block.count; ++i) {
        char address[32];
        std::snprintf(address, sizeof address, "%p", static_cast<const void *>(&block.params[i]));
        std::string column = std::string(address).substr(0, 10);
        column.resize(10, ' ');
        const size_t at = text.find(column + "    " + std::to_string(block.params[i].token) + " ");
        EXPECT_NE(at, std::string::npos) << text;
        if (at != std::string::npos) {
            text.replace(at, 10, "@parameter");
        }
    }
    return text;
}

} // namespace

TEST_F(ShowState, GoldenVersion) {
    expect_golden_output("rib_show_version", [] {
        for (const uint32_t count : {1, 2, 3, 5, 6, 8, 9, 10, 17, 18}) {
            label((std::to_string(count) + " versions").c_str());
            show_versions(count);
            if (count == 1) {
                std::printf("|\n");
            }
        }
    });
}

TEST_F(ShowState, VersionListsOfEveryLength) {
    for (uint32_t count = 1; count <= 240; ++count) {
        ASSERT_EQ(printed_by([&] { show_versions(count); }), second_versions(count)) << count;
    }
}

TEST_F(ShowState, GoldenDb) {
    expect_golden_output("rib_show_db", [] {
        const record database{7, created};
        label("header");
        rib_show_db(1, database.data(), record{20, modified, 1, 2, 3}.data());
        label("the widest values");
        rib_show_db(0, nullptr, record{4294967295, 0, 4294967295, 4294967295, 4294967295}.data());
        label("under 100 million");
        rib_show_db(0, nullptr, record{4095, modified, 99999999, 0, 10}.data());
    });
}

TEST_F(ShowState, GoldenDbTotal) {
    expect_golden_output("rib_show_db_total", [] {
        label("header");
        rib_show_db_total(1, record{9, 9, 1, 2, 3}.data());
        label("the rule stands without a header too");
        rib_show_db_total(0, record{9, 9, 4294967295, 0, 12345678}.data());
    });
}

TEST_F(ShowState, GoldenVerfInfo) {
    expect_golden_output("rib_show_verf_info", [] {
        label("complete");
        rib_show_verf_info(1, record{9, 9, created, modified}.data());
        label("not complete");
        rib_show_verf_info(1, record{9, 9, created, 0}.data());
        label("nothing without the header flag");
        rib_show_verf_info(0, record{9, 9, created, modified}.data());
    });
}

TEST_F(ShowState, GoldenRegister) {
    expect_golden_output("rib_show_register", [] {
        label("header");
        rib_show_register(1, record{28, 100}.name("not printed", 80).data());
        label("a client without a name");
        rib_show_register(0, record{4294967295, 4294967295}.name("", 80).data());
    });
}

TEST_F(ShowState, GoldenSysPort) {
    expect_golden_output("rib_show_sys_port", [] {
        uint32_t header = 7;
        label("no port: the header is still owed");
        rib_show_sys_port(&header, module({}).data());
        EXPECT_EQ(header, 7u);
        label("header once, ports of every byte");
        rib_show_sys_port(&header, module({0, 1, 9, 18, 27, 36, 45, 54, 62, 63}).data());
        EXPECT_EQ(header, 0u);
        label("a second module");
        rib_show_sys_port(&header, module({5}).data());
    });
}

TEST_F(ShowState, GoldenP) {
    const uint32_t value = 0xabc;
    const uint8_t bytes[] = {0xff, 0xff, 0xff, 0xff, 0x11};
    const rib_param params[] = {
        {1, 0x10, &value}, {12345, 0xffff, nullptr}, {7, 0, bytes}, {4294967295, 0x12345, bytes}};
    const rib_param_block block = {4, params};
    const rib_param_block empty = {0, nullptr};
    const std::string text =
        printed_by([&] { rib_show_p(&block); }) + "[no parameters]\n" + printed_by([&] { rib_show_p(&empty); });
    expect_golden("diag/golden/rib_show_p.txt", without_addresses(text, block));
}

TEST_F(ShowState, AsManyParametersAsABlockCounts) {
    std::vector<rib_param> params;
    for (uint32_t token = 0; token < 255; ++token) {
        params.push_back({token, token, token % 2 == 0 ? nullptr : &params});
    }
    const rib_param_block block = {255, params.data()};
    const std::string text = printed_by([&] { rib_show_p(&block); });
    EXPECT_EQ(text.substr(0, 18), "# parameters = 255");
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4 + 255);
}

TEST_F(ShowState, GoldenInMem) {
    expect_golden_output("rib_show_in_mem", [] {
        label("every pool; the total counts bytes");
        record memory;
        for (uint32_t pool = 1; pool <= 16; ++pool) {
            memory.words({pool, pool * 10, pool - 1});
        }
        rib_show_in_mem(memory.data());
        label("unknown pools; the total wraps at 32 bits");
        record wide;
        for (uint32_t pool = 0; pool < 16; ++pool) {
            wide.words({pool == 0 ? 0 : pool + 100, 0xffffffff, pool == 0 ? 3U : 0U});
        }
        rib_show_in_mem(wide.data());
    });
}

TEST_F(ShowState, GoldenInHa) {
    expect_golden_output("rib_show_in_ha", [] {
        label("only 1 is true");
        rib_show_in_ha(record{1, 1, 0, 2, 0xffffffff, 1}.data());
        label("the other way round");
        rib_show_in_ha(record{9, 0, 1, 1, 1, 0x01000000}.data());
    });
}

TEST_F(ShowState, AgreesWithASecondFormatterOnRandomRecords) {
    random_fields random(78);
    for (int i = 0; i < random_rounds; ++i) {
        const record entry = random.words(1).word(random.time()).add(random.words(4));
        const uint8_t *bytes = entry.data();
        ASSERT_EQ(printed_by([&] { rib_show_db(0, nullptr, bytes); }),
                  render("{d5@w0}    {r8@w8}    {r8@w12}    {r8@w16}    {m@w4}\n", bytes));
        ASSERT_EQ(printed_by([&] { rib_show_register(0, bytes); }),
                  render("{d4@w0}        {d8@w4}        {t0:rib_uuid@w0}\n", bytes));
        ASSERT_EQ(printed_by([&] { rib_show_db_total(0, bytes); }),
                  "-----    --------    --------    --------    ------------------------\n" +
                      render("Total    {r8@w8}    {r8@w12}    {r8@w16}\n", bytes));
    }
}

TEST_F(ShowState, AgreesWithASecondFormatterOnRandomReports) {
    random_fields random(80);
    for (int i = 0; i < random_rounds; ++i) {
        const record report = random.words(2).word(random.time()).word(random.below(2) * random.time());
        const bool complete = word_at(report.data(), 12) != 0;
        ASSERT_EQ(printed_by([&] { rib_show_verf_info(random.below(2) + 1, report.data()); }),
                  render(complete ? "\nRoute Verification Report\n  Generated {m@w8}\n  Completed {m@w12}\n"
                                  : "\nRoute Verification Report\n  Generated {m@w8}\n"
                                    "  Report not completely generated!\n",
                         report.data()));
    }
}

TEST_F(ShowState, AgreesWithASecondFormatterOnRandomAvailability) {
    constexpr const char *lines[] = {"Switching Over         ", "Started Stateful       ", "Started Stateless      ",
                                     "Standby Sup Existed    ", "Just Sent Heartbeat    "};
    random_fields random(81);
    for (int i = 0; i < random_rounds; ++i) {
        const record state =
            random.words(1).words({random.below(3), random.below(3), random.word(), random.below(3), random.word()});
        std::string text = render("\nSup State              {t0:rib_sup_state@w0}\n", state.data());
        for (size_t flag = 0; flag < 5; ++flag) {
            text += std::string(lines[flag]) + (word_at(state.data(), 4 + 4 * flag) == 1 ? "T\n" : "F\n");
        }
        ASSERT_EQ(printed_by([&] { rib_show_in_ha(state.data()); }), text);
    }
}

TEST_F(ShowState, AgreesWithASecondFormatterOnRandomPorts) {
    random_fields random(82);
    for (int i = 0; i < random_rounds / 4; ++i) {
        record entry = random.words(4);
        for (int byte = 0; byte < 8; ++byte) {
            entry.byte(random.below(3) * random.byte() & 0xff);
        }
        entry.add(random.words(size_t{6} * 64));
        uint32_t header = 0;
        std::string text;
        for (size_t port = 0; port < 64; ++port) {
            if ((entry.data()[16 + port / 8] >> port % 8 & 1) != 0) {
                const auto *bytes = entry.data() + 24 + 24 * port;
                text += printed_by([&] { fib_show_port(0, bytes); });
            }
        }
        ASSERT_EQ(printed_by([&] { rib_show_sys_port(&header, entry.data()); }), text);
    }
}

TEST_F(ShowState, AgreesWithASecondFormatterOnRandomPools) {
    random_fields random(79);
    for (int i = 0; i < random_rounds / 10; ++i) {
        const record memory = random.words(48);
        std::string text = "\nMemory Pool     Data Size    # Data\n------------    ---------    ---------\n";
        uint64_t total = 0;
        for (size_t at = 0; at < 192; at += 12) {
            text += render("{t12:rib_mem@w0}    {d9@w4}    {d0@w8}\n", memory.data() + at);
            total += uint64_t{word_at(memory.data(), at + 4)} * word_at(memory.data(), at + 8) % 0x100000000;
        }
        text += "------------    ---------    ---------\nTotal                        " +
                digits(total % 0x100000000, 10) + "\n";
        ASSERT_EQ(printed_by([&] { rib_show_in_mem(memory.data()); }), text);
    }
}
