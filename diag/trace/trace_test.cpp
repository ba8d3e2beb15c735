// Traces of queries and of what is not a route, as kept outputs and against a second formatter.
#include "diag/show/show_fixture.h"
#include "diag/text/expected_texts.h"
#include "rib_trace.h"

using namespace ribkit::diag;
using namespace ribkit::testing;

namespace {

class Traces : public printing_test {};

using query_trace = void (*)(const void *);
using update_trace = void (*)(uint32_t, const void *);
using route_trace = void (*)(const void *, const void *);

/// A trace of one message, how a second formatter writes it, and the vocabulary's values worth keeping.
struct query {
    const char *name;
    query_trace print;
    size_t words;
    std::string form;
    bool skipped = true;
};

const std::string stamp = "22:13:20 ";

const query queries[] = {
    {"test_query", rib_printf_test_query, 12, "Sent RIB {t0:rib_test_type@w4} (size 48)"},
    {"db_query", rib_printf_db_query, 4, "Sent RIB {t0:rib_query@w4} {d0@w12} DB summaries (size 16)"},
    {"sys_query", rib_printf_sys_query, 4, "Sent RIB {t0:rib_query@w4} system attributes (size 16)"},
    {"vsan_query", rib_printf_vsan_query, 4,
     "Sent RIB uuid {d0@w0} {t0:rib_query@w4} {d0@w12} vsan attributes (size 16)"},
    {"dm_query", rib_printf_dm_query, 4, "Sent RIB uuid {d0@w0} {t0:rib_query@w4} {d0@w12} domain reach (size 16)"},
    {"reg_query", rib_printf_reg_query, 3, "Sent RIB {t0:rib_query@w4} {d0@w8} registries (size 12)"},
    {"in_query", rib_printf_in_query, 4, "Sent RIB {t0:rib_query@w4} {t0:rib_in@w8} (size 16)"},
    {"fcl_query", rib_printf_fcl_query, 10, "Sent RIB uuid {d0@w0} {t0:rib_fclrt_type@w4} {d0@w36} labels (size 40)"},
    {"fcm_query", rib_printf_fcm_query, 6, "Sent RIB {t0:rib_fcmrt_type@w8} {d0@w20} mcast (size 24)"},
    {"verf_query", rib_printf_verf_query, 13, "Sent RIB {t0:rib_query@w8} {d0@w48} {t0:rib_verf@w12} routes (size 52)"},
};

bool faces_operator(const uint8_t *msg) { return word_at(msg, 0) == 39 || word_at(msg, 0) == 66; }

/// Words that mean something to the traces: identities, kinds, counts.
record random_message(random_fields &random, size_t words) {
    constexpr uint32_t senders[] = {10, 12, 38, 39, 40, 65, 66, 67, 0x10027, 0x27000000, 0xffffffff};
    record msg{senders[random.below(std::size(senders))]};
    for (size_t i = 1; i < words; ++i) {
        const uint32_t pick = random.below(4);
        msg.word(pick == 0 ? uint32_t{1} << random.below(24) : pick == 1 ? random.below(12) : random.word());
    }
    return msg;
}

std::string upper(std::string text) {
    for (char &c : text) {
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
    }
    return text;
}

} // namespace

TEST_F(Traces, GoldenQueries) {
    for (const query &trace : queries) {
        expect_golden_output(std::string("rib_printf_") + trace.name, [&] {
            for (uint32_t kind = 1; kind <= 8; kind <<= 1) {
                record msg{12, kind, kind, kind << 4};
                for (uint32_t word = 16; word < 64; word += 4) {
                    msg.word(word);
                }
                trace.print(msg.data());
            }
            label("silent for operators");
            trace.print(record{39}.fill_to(64).data());
            trace.print(record{66}.fill_to(64).data());
            label("unknown kinds, the widest values");
            trace.print(record{}.fill_to(64).data());
            record widest;
            for (int word = 0; word < 16; ++word) {
                widest.word(0xffffffff);
            }
            trace.print(widest.data());
        });
    }
}

TEST_F(Traces, AgreesWithASecondFormatterOnRandomQueries) {
    random_fields random(61);
    for (int i = 0; i < random_rounds; ++i) {
        for (const query &trace : queries) {
            const record msg = random_message(random, trace.words);
            ASSERT_EQ(printed_by([&] { trace.print(msg.data()); }),
                      faces_operator(msg.data()) ? "" : stamp + render(trace.form + "\n", msg.data()))
                << trace.name;
        }
    }
}

TEST_F(Traces, GoldenNodeQuery) {
    expect_golden_output("rib_printf_node_query", [] {
        for (const uint32_t type : {0, 1, 2, 3, 4, 5, 255}) {
            rib_printf_node_query(record{10}.byte(type).byte(type).half(0).data());
        }
        label("silent for operators");
        rib_printf_node_query(record{39, 0}.data());
        rib_printf_node_query(record{66, 0}.data());
    });
}

TEST_F(Traces, GoldenFcuQuery) {
    expect_golden_output("rib_printf_fcu_query", [] {
        for (uint32_t type = 1; type != 0; type <<= 1) {
            rib_printf_fcu_query(record{12, type, 7, 0, 0, 0}.data());
        }
        label("either bit counts versions, whatever else is asked");
        rib_printf_fcu_query(record{12, 0x00200002, 7, 0, 0, 0}.data());
        rib_printf_fcu_query(record{12, 0xffdffffd, 7, 0, 0, 0}.data());
        rib_printf_fcu_query(record{12, 0x3, 4294967295, 0, 0, 0}.data());
        label("silent for operators");
        rib_printf_fcu_query(record{39, 1, 7, 0, 0, 0}.data());
        rib_printf_fcu_query(record{66, 2, 7, 0, 0, 0}.data());
    });
}

TEST_F(Traces, GoldenReg) {
    expect_golden_output("rib_printf_reg", [] {
        rib_printf_reg(record{12, 100}.name("fspf", 80).data());
        label("operators too");
        rib_printf_reg(record{39, 0}.name("rib-config", 80).data());
        rib_printf_reg(record{66, 4294967295}.name("", 80).data());
        label("a name that fills its room");
        rib_printf_reg(record{12, 1}.name(std::string(79, 'n'), 80).data());
        rib_printf_reg(record{12, 1}.name(std::string(80, 'n'), 80).name("behind", 8).data());
    });
}

TEST_F(Traces, GoldenVerf) {
    expect_golden_output("rib_printf_verf", [] {
        for (uint32_t kind = 0x8; kind <= 0x8000; kind <<= 1) {
            rib_printf_verf(record{28, 9, kind}.data());
        }
        rib_printf_verf(record{500, 9, 0x30}.data());
        label("silent for operators");
        rib_printf_verf(record{39, 9, 0x10}.data());
        rib_printf_verf(record{66, 9, 0x10}.data());
    });
}

TEST_F(Traces, GoldenUpdates) {
    const std::pair<const char *, update_trace> updates[] = {{"rib_printf_fclrt_update", rib_printf_fclrt_update},
                                                             {"rib_printf_fcurt_update", rib_printf_fcurt_update},
                                                             {"rib_printf_fcmrt_update", rib_printf_fcmrt_update}};
    for (const auto &update : updates) {
        expect_golden_output(update.first, [&] {
            for (uint32_t oper = 1; oper <= 0x20000; oper <<= 1) {
                update.second(oper + 15, record{12, 20, oper, 12, 16}.data());
            }
            label("other clients, the widest values");
            update.second(0, record{25, 0, 3, 0, 0}.data());
            update.second(4294967295, record{4294967295, 4294967295, 0, 4294967295, 4294967295}.data());
            label("silent for operators");
            update.second(980, record{39, 20, 1, 12, 16}.data());
            update.second(980, record{66, 20, 1, 12, 16}.data());
        });
    }
}

TEST_F(Traces, GoldenFibState) {
    expect_golden_output("rib_printf_fib_state", [] {
        for (uint32_t state = 0; state <= 8; ++state) {
            rib_printf_fib_state(record{state, 0, 0, state}.data());
        }
        label("operators' numbers are modules here, and the count wraps");
        rib_printf_fib_state(record{39, 0, 0, 1}.data());
        rib_printf_fib_state(record{66, 0, 0, 1}.data());
        rib_printf_fib_state(record{4294967295, 0, 0, 4294967295}.data());
    });
}

TEST_F(Traces, AgreesWithASecondFormatterOnRandomUpdates) {
    random_fields random(62);
    for (int i = 0; i < random_rounds; ++i) {
        const record msg = random_message(random, 5);
        const uint8_t *bytes = msg.data();
        const uint32_t size = random.word();
        const auto expect = [&](const std::string &text, const std::string &form) {
            const std::string name = upper(expected("rib_uuid").of(word_at(bytes, 0)));
            ASSERT_EQ(text, faces_operator(bytes) ? ""
                                                  : stamp + name + " sent RIB " + render(form, bytes) + " (size " +
                                                        digits(size, 10) + ")\n");
        };
        const std::string change = "{t0:rib_oper@w8} vsan {d0@w4} for ";
        expect(printed_by([&] { rib_printf_fclrt_update(size, bytes); }), change + "{d0@w12} labels");
        expect(printed_by([&] { rib_printf_fcurt_update(size, bytes); }), change + "{d0@w16} ucast");
        expect(printed_by([&] { rib_printf_fcmrt_update(size, bytes); }), change + "{d0@w12} mcast");
    }
}
