// The checks: golden messages at every length, whole updates, every count at its bound and beyond, every rule's report.
#include "codec/message.h"
#include "codec/witness/golden.h"
#include "codec/witness/naive_check.h"
#include "rib_codes.h"

#include <gtest/gtest.h>
#include <set>

namespace {

using namespace ribkit::witness;
using byte_vector = std::vector<uint8_t>;

const std::vector<golden> &goldens() {
    static const std::vector<golden> all = load_goldens(RIBKIT_SOURCE_DIR "/codec/witness/golden");
    return all;
}

constexpr rib_check_report untouched{"untouched", "", 1, 2, 3, RIB_CHECK_SHORT};

uint32_t checked(std::string_view name, std::span<const uint8_t> message, rib_check_report *report = nullptr) {
    return ribkit::codec::find_message(name)->check(message.data(), static_cast<uint32_t>(message.size()), report);
}

/// What a check says, as one line.
std::string said(std::string_view name, std::span<const uint8_t> message) {
    rib_check_report report = untouched;
    const uint32_t code = checked(name, message, &report);
    if (code == RIB_OK) {
        return report.message == untouched.message ? "ok" : "ok, but reported";
    }
    char line[200];
    rib_check_report_str(&report, line, sizeof line);
    return (code == RIB_BAD_PARAMETERS ? "bad " : code == RIB_EXCESS_DATA ? "excess " : "?? ") + std::string(line);
}

/// A refusal names its message, a place in it, and more than is allowed.
void expect_sound(std::string_view name, size_t size, uint32_t code, const rib_check_report &report) {
    EXPECT_EQ(report.message, name);
    EXPECT_STRNE(report.field, "");
    EXPECT_GT(report.found, report.allowed) << name << ' ' << report.field;
    if (code == RIB_EXCESS_DATA) {
        EXPECT_EQ(report.rule, RIB_CHECK_EXCESS) << name;
        EXPECT_EQ(report.found, size) << name;
        EXPECT_EQ(report.offset, report.allowed) << name;
    } else if (report.rule == RIB_CHECK_SHORT) {
        EXPECT_EQ(report.allowed, size) << name;
        EXPECT_LT(report.offset, report.found) << name;
    } else {
        EXPECT_EQ(report.rule, RIB_CHECK_COUNT) << name;
        EXPECT_LT(report.offset, size) << name;
    }
}

void expect_refused(std::string_view name, std::span<const uint8_t> message, uint32_t code) {
    rib_check_report report = untouched;
    EXPECT_EQ(checked(name, message, &report), code) << name << ", " << message.size() << " bytes";
    EXPECT_EQ(checked(name, message), code) << name << " without a report";
    expect_sound(name, message.size(), code, report);
}

/// Accepted at exactly its size; every other length is refused.
void expect_exact(std::string_view name, byte_vector message) {
    EXPECT_EQ(said(name, message), "ok") << name;
    EXPECT_EQ(checked(name, message), RIB_OK) << name << " without a report";
    for (size_t size = 0; size < message.size(); ++size) {
        expect_refused(name, {message.data(), size}, RIB_BAD_PARAMETERS);
    }
    for (size_t more = 1; more <= 64; ++more) {
        message.push_back(static_cast<uint8_t>(more));
        expect_refused(name, message, RIB_EXCESS_DATA);
    }
}

TEST(check, golden_messages_are_accepted_at_their_size_only) {
    std::set<std::string> accepted;
    for (const golden &vector : goldens()) {
        byte_vector message = vector.source(direction::ntoh, order::big);
        if (vector.message.starts_with("rib_fc") && vector.message.ends_with("rt_update")) {
            store_word(order::big, message.data() + (vector.message == "rib_fcurt_update" ? 16 : 12), 0); // no records
        }
        const std::optional<size_t> size = message_size(vector.message, message);
        if (vector.message.starts_with("fcRoute") || !size) {
            continue;
        }
        accepted.insert(vector.message);
        message.resize(*size);
        expect_exact(vector.message, message);
    }
    for (const ribkit::codec::message &c : ribkit::codec::messages()) {
        EXPECT_TRUE(accepted.contains(std::string(c.name))) << c.name << ": no golden message can be accepted";
    }
}

TEST(check, golden_messages_at_every_length_as_the_model) {
    for (const golden &vector : goldens()) {
        const byte_vector message = vector.source(direction::ntoh, order::big);
        for (size_t size = 0; size <= message.size() && ribkit::codec::find_message(vector.message) != nullptr;
             ++size) {
            const std::span part(message.data(), size);
            ASSERT_EQ(checked(vector.message, part), verdict(vector.message, part))
                << vector.message << ", " << vector.title << ", " << size << " bytes";
        }
    }
}

// --- Messages made for a purpose: zero but for some numbers.

class draft {
  public:
    explicit draft(size_t size) : bytes_(size) {}
    draft &word(size_t at, uint32_t value) {
        store_word(order::big, bytes_.data() + at, value);
        return *this;
    }
    draft &byte(size_t at, uint32_t value) {
        bytes_.at(at) = static_cast<uint8_t>(value);
        return *this;
    }
    draft &add(const byte_vector &more) {
        bytes_.insert(bytes_.end(), more.begin(), more.end());
        return *this;
    }
    operator byte_vector() const { return bytes_; } // NOLINT(google-explicit-constructor)
    [[nodiscard]] const byte_vector &bytes() const { return bytes_; }

  private:
    byte_vector bytes_;
};

byte_vector unicast(uint32_t hops) { return draft(32 + size_t{8} * hops).word(28, hops); }
byte_vector multicast(uint32_t members) { return draft(16 + size_t{4} * members).word(12, members); }
byte_vector label_entry(uint32_t labels) { return draft(8 + size_t{4} * labels).byte(1, labels); }
byte_vector label_route(uint32_t labels) {
    return draft(104).word(20, 2).word(24, 16).word(28, 2).add(label_entry(labels)).add(label_entry(0));
}

TEST(check, whole_updates_at_every_length) {
    expect_exact("rib_fcurt_update", draft(980));
    expect_exact("rib_fcurt_update",
                 draft(980).word(12, 240).word(16, 3).add(unicast(0)).add(unicast(4)).add(unicast(1)));
    expect_exact("rib_fcmrt_update", draft(16).word(12, 3).add(multicast(2)).add(multicast(0)).add(multicast(9)));
    expect_exact("rib_fclrt_update", draft(16).word(12, 2).add(label_route(3)).add(label_route(255)));
}

TEST(check, records_of_one_size_and_of_many) {
    draft update(980);
    for (uint32_t i = 0; i < 60; ++i) {
        update.word(16, i + 1).add(unicast(i < 30 ? 2 : i % 4));
        EXPECT_EQ(said("rib_fcurt_update", update.bytes()), "ok") << i;
    }
    update.word(980 + 48 * 29 + 28, 3); // the last of the equal ones takes the next one's first words
    EXPECT_EQ(checked("rib_fcurt_update", update.bytes()), verdict("rib_fcurt_update", update.bytes()));
    EXPECT_NE(checked("rib_fcurt_update", update.bytes()), RIB_OK);
}

enum class width : uint8_t { word, second_byte };

/// A count with a bound: where it stands in a message that has it, and how many bytes that message is long.
struct bounded {
    const char *message, *field;
    width is;
    size_t offset;
    uint32_t bound;
    byte_vector around;
};

const std::vector<bounded> &bounds() {
    static const std::vector<bounded> all{
        {"rib_fcurt_update", "n_version", width::word, 12, 240, draft(980)},
        {"rib_fclrt", "n_match", width::word, 20, 2, draft(104)},
        {"rib_fclrt", "n_src", width::word, 24, 16, draft(104)},
        {"rib_fclrt_update", "n_match", width::word, 16 + 20, 2, draft(120).word(12, 1)},
        {"rib_fclrt_update", "n_src", width::word, 120 + 24, 16, draft(224).word(12, 2)},
        {"rib_fclrt_query", "n_match", width::word, 24, 2, draft(40)},
        {"rib_lbl_route", "n_match", width::word, 24, 2, draft(40)},
        {"rib_fclrt_info", "n_match", width::word, 44 + 24, 2, draft(84).word(0, 2)},
        {"rib_ucast_route", "ctrl", width::second_byte, 36, 3, draft(56).word(32, 1)},
        {"rib_ucast_route", "ctrl", width::second_byte, 44, 3, draft(64).word(32, 2)},
        {"rib_fcurt_info", "ctrl", width::second_byte, 44 + 36, 3, draft(100).word(0, 2).word(44 + 32, 1)},
        {"fib_fcu_path", "n_path", width::word, 24, 16, draft(348)},
        {"fib_fcu_path", "path", width::second_byte, 28, 3, draft(348).word(24, 1)},
        {"fib_fcu_path", "path", width::second_byte, 328, 3, draft(348).word(24, 16)},
        {"fib_fcl_path", "n_label", width::word, 24, 2, draft(360)},
        {"fib_fcl_path", "n_path", width::word, 28, 16, draft(360)},
        {"fib_fcl_path", "path", width::second_byte, 340, 3, draft(360).word(28, 16)},
    };
    return all;
}

byte_vector with(const bounded &b, uint32_t count) {
    byte_vector message = b.around;
    if (b.is == width::word) {
        store_word(order::big, message.data() + b.offset, count);
    } else {
        message[b.offset + 1] = static_cast<uint8_t>(count);
    }
    return message;
}

TEST(check, counts_up_to_their_bounds_are_accepted) {
    for (const bounded &b : bounds()) {
        for (uint32_t count = 0; count <= b.bound; ++count) {
            EXPECT_EQ(said(b.message, with(b, count)), "ok") << b.field << " = " << count;
        }
    }
}

TEST(check, counts_beyond_their_bounds_are_refused_however_many_bytes_there_are) {
    for (const bounded &b : bounds()) {
        const size_t holder = b.is == width::word ? 4 : 0;
        for (const uint32_t count :
             {b.bound + 1, b.bound + 2, 127U, 128U, 255U, 256U, 0x7fffffffU, 0x80000000U, 0xffffffffU}) {
            if (count <= b.bound || (holder == 0 && count > 255)) {
                continue;
            }
            for (const size_t more : {0, 1, 4096}) {
                byte_vector message = with(b, count);
                message.resize(message.size() + more);
                EXPECT_EQ(said(b.message, message), "bad " + std::string(b.message) + ": " + b.field + " at offset " +
                                                        std::to_string(b.offset) + " is " + std::to_string(count) +
                                                        ", at most " + std::to_string(b.bound) + " allowed");
            }
        }
    }
}

/// A count without a bound: every entry adds its size.
struct open_count {
    const char *message, *field;
    size_t offset, fixed, entry;
};

constexpr open_count opens[] = {
    {"rib_fcurt", "n_hop", 28, 32, 8},           {"rib_fcmrt", "n_intf", 12, 16, 4},
    {"rib_mcast_route", "n_intf", 16, 20, 4},    {"rib_topo", "n_version", 8, 12, 4},
    {"rib_db_info", "n_vsan", 0, 8, 20},         {"rib_dm_info", "n_vsan", 0, 4, 68},
    {"rib_reg_info", "n_client", 0, 4, 88},      {"rib_sys_info", "n_module", 0, 4, 1560},
    {"rib_verf_info", "n_key", 0, 16, 16},       {"fib_fcm_path", "n_member", 16, 20, 4},
    {"fib_fcu_rsp_path", "n_entry", 16, 20, 16}, {"fib_fcm_rsp_path", "n_entry", 16, 20, 12},
    {"fib_fcl_rsp_path", "n_entry", 16, 20, 32}, {"fib_vsan_update", "n_vsan", 4, 8, 8},
};

TEST(check, open_counts_have_to_fit_the_bytes) {
    for (const open_count &o : opens) {
        for (uint32_t count = 0; count < 6; ++count) {
            draft message(o.fixed + o.entry * count);
            EXPECT_EQ(said(o.message, message.word(o.offset, count).bytes()), "ok") << o.message << ' ' << count;
            if (count != 0) {
                EXPECT_EQ(checked(o.message, message.word(o.offset, count - 1).bytes()), RIB_EXCESS_DATA) << o.message;
            }
            for (const uint32_t more : {count + 1, 0x10000000U, 0x20000000U, 0x40000000U, 0x7fffffffU, 0xffffffffU}) {
                EXPECT_EQ(said(o.message, message.word(o.offset, more).bytes()),
                          "bad " + std::string(o.message) + ": " + o.field + " at offset " + std::to_string(o.offset) +
                              " is " + std::to_string(more) + ", at most " + std::to_string(count) + " allowed");
            }
        }
    }
}

/// Entries that each say their own size: the first that does not fit is named.
TEST(check, counts_of_entries_with_their_own_size_have_to_fit_the_bytes) {
    for (const uint32_t count : {2U, 3U, 0x10000000U, 0xffffffffU}) {
        EXPECT_EQ(said("rib_fclrt", draft(104).word(28, count).add(label_entry(2)).bytes()),
                  "bad rib_fclrt: ctrl at offset 120 ends at 124, but the bytes end at 120");
        EXPECT_EQ(said("rib_lbl_route", draft(40).word(28, count).add(label_entry(0)).bytes()),
                  "bad rib_lbl_route: ctrl at offset 48 ends at 52, but the bytes end at 48");
        EXPECT_EQ(said("rib_fclrt_info", draft(44).word(0, count).bytes()),
                  "bad rib_fclrt_info: uuid..mask at offset 44 ends at 68, but the bytes end at 44");
        EXPECT_EQ(said("rib_fcmrt_info", draft(24).word(0, count).bytes()),
                  "bad rib_fcmrt_info: uuid at offset 24 ends at 28, but the bytes end at 24");
        EXPECT_EQ(said("rib_fcurt_update", draft(980).word(16, count).add(unicast(1)).bytes()),
                  "bad rib_fcurt_update: fcid at offset 1020 ends at 1024, but the bytes end at 1020");
        EXPECT_EQ(said("rib_fcmrt_update", draft(16).word(12, count).add(multicast(0)).bytes()),
                  "bad rib_fcmrt_update: fcid at offset 32 ends at 36, but the bytes end at 32");
    }
    EXPECT_EQ(said("rib_fcurt_update", draft(980).word(16, 1).add(unicast(1)).word(980 + 28, 0xffffffff).bytes()),
              "bad rib_fcurt_update: n_hop at offset 1008 is 4294967295, at most 1 allowed");
    EXPECT_EQ(said("rib_fclrt_intf", draft(12).byte(1, 2).bytes()),
              "bad rib_fclrt_intf: ctrl at offset 0 is 2, at most 1 allowed");
}

TEST(check, reports_are_one_line_for_each_rule) {
    EXPECT_EQ(said("rib_fcurt", draft(64).word(28, 9).bytes()),
              "bad rib_fcurt: n_hop at offset 28 is 9, at most 4 allowed");
    EXPECT_EQ(said("rib_fcurt", draft(31).bytes()),
              "bad rib_fcurt: n_hop at offset 28 ends at 32, but the bytes end at 31");
    EXPECT_EQ(said("rib_fcurt", draft(33).bytes()), "excess rib_fcurt: ends at 32, but the bytes end at 33");
    EXPECT_EQ(said("rib_fcurt", {}), "bad rib_fcurt: fcid at offset 0 ends at 4, but the bytes end at 0");
    EXPECT_EQ(said("rib_fib_fcu_lb_rsp", draft(9).bytes()),
              "excess rib_fib_fcu_lb_rsp: ends at 8, but the bytes end at 9");
}

TEST(check, a_report_is_cut_to_its_room) {
    const rib_check_report report{"rib_fcurt", "n_hop", 28, 9, 4, RIB_CHECK_COUNT};
    const std::string line = "rib_fcurt: n_hop at offset 28 is 9, at most 4 allowed";
    for (uint32_t size = 0; size < 70; ++size) {
        std::vector<char> room(size + 1, '#');
        EXPECT_EQ(rib_check_report_str(&report, room.data(), size), static_cast<int>(line.size()));
        EXPECT_EQ(room[size], '#') << size;
        if (size != 0) {
            EXPECT_EQ(std::string(room.data()), line.substr(0, size - 1));
        }
    }
}

TEST(check, a_table_entry_has_what_its_display_walks_over) {
    EXPECT_EQ(said("rib_ucast_route", draft(56).word(32, 1).bytes()), "ok");
    // Two hops of three labels: the display finds the second one behind the labels of the first, where it stands in the
    // first one's last labels and beyond.
    EXPECT_EQ(said("rib_ucast_route", draft(64).word(32, 2).byte(37, 3).bytes()), "ok");
    EXPECT_EQ(said("rib_ucast_route", draft(64).word(32, 2).byte(37, 3).byte(57, 1).bytes()),
              "bad rib_ucast_route: ctrl at offset 56 is 1, at most 0 allowed");
    EXPECT_EQ(said("rib_ucast_route", draft(68).word(32, 2).byte(37, 3).byte(57, 1).bytes()), "ok");
    EXPECT_EQ(said("rib_ucast_route", draft(72).word(32, 3).byte(37, 3).byte(57, 2).bytes()),
              "bad rib_ucast_route: ctrl at offset 72 ends at 76, but the bytes end at 72");
}

TEST(check, a_registered_name_has_to_end) {
    draft message(88);
    for (size_t i = 8; i < 87; ++i) {
        EXPECT_EQ(said("rib_register", message.byte(i, 'x').bytes()), "ok");
    }
    EXPECT_EQ(said("rib_register", message.byte(87, 'x').bytes()),
              "bad rib_register: length of name at offset 8 is 80, at most 79 allowed");
}

TEST(check, an_internal_structure_is_as_long_as_its_kind_says) {
    EXPECT_EQ(said("rib_in_info", draft(32).word(4, 1).bytes()), "ok");
    EXPECT_EQ(said("rib_in_info", draft(200).word(4, 2).bytes()), "ok");
    for (const uint32_t kind : {0U, 3U, 0x10001U, 0x02000000U, 0xffffffffU}) {
        EXPECT_EQ(said("rib_in_info", draft(8).word(4, kind).bytes()), "ok");
        EXPECT_EQ(said("rib_in_info", draft(32).word(4, kind).bytes()),
                  "excess rib_in_info: ends at 8, but the bytes end at 32");
    }
    EXPECT_EQ(said("rib_in_info", draft(31).word(4, 1).bytes()),
              "bad rib_in_info: body at offset 8 ends at 32, but the bytes end at 31");
    EXPECT_EQ(said("rib_in_info", draft(199).word(4, 2).bytes()),
              "bad rib_in_info: body at offset 8 ends at 200, but the bytes end at 199");
}

TEST(check, verification_keys_are_as_long_as_the_type_says) {
    const std::pair<uint32_t, size_t> sizes[] = {
        {0, 16},          {0x4, 16},        {0x4444, 16}, {0x8888, 16},  {0x1, 32},    {0x10, 32}, {0x100, 32},
        {0x1000, 32},     {0x2, 12},        {0x20, 12},   {0x200, 12},   {0x2000, 12}, {0x3, 32},  {0x2222, 12},
        {0xffff0002, 12}, {0x10000000, 16}, {0x6, 12},    {0x20000, 16}, {0x9, 32}};
    for (const auto &[type, size] : sizes) {
        EXPECT_EQ(said("rib_verf_info", draft(16 + 5 * size).word(0, 5).word(4, type).bytes()), "ok") << type;
        EXPECT_EQ(said("rib_verf_info", draft(15 + 5 * size).word(0, 5).word(4, type).bytes()),
                  "bad rib_verf_info: n_key at offset 0 is 5, at most 4 allowed");
        EXPECT_EQ(said("rib_verf_query", draft(52).word(12, type).bytes()), "ok");
    }
}

TEST(check, numbers_that_no_vocabulary_knows_are_accepted) {
    draft update(16);
    for (size_t at = 0; at < 12; at += 4) {
        update.word(at, 0xfedcba98);
    }
    EXPECT_EQ(said("rib_fcmrt_update", update.bytes()), "ok");
    EXPECT_EQ(said("rib_fcmrt_query", byte_vector(24, 0xff)), "ok");
    EXPECT_EQ(said("fib_port", byte_vector(24, 0xff)), "ok");
}

// Received in place, a list that runs over the next route swaps its words before that route is looked at.
TEST(check, a_multicast_route_must_not_swap_the_count_of_the_next) {
    draft message(4 + 20 + 20);
    message.word(0, 2).word(4 + 16, 5);
    EXPECT_EQ(said("rib_fcmrt_info", message.bytes()), "ok"); // the next has no interfaces
    message.word(24 + 16, 1).add(byte_vector(4));
    EXPECT_EQ(said("rib_fcmrt_info", message.bytes()),
              "bad rib_fcmrt_info: n_intf at offset 40 is 1, at most 0 allowed");
    message.word(4 + 16, 4);
    EXPECT_EQ(said("rib_fcmrt_info", message.bytes()), "ok");
}

TEST(check, a_unicast_route_must_not_swap_the_counts_of_the_next) {
    draft message(8 + 36 + 36 + 20);
    message.word(0, 2).word(8 + 32, 4).word(44 + 32, 1);
    EXPECT_EQ(said("rib_fcurt_info", message.bytes()), "ok");
    message.word(8 + 32, 5);
    EXPECT_EQ(said("rib_fcurt_info", message.bytes()),
              "bad rib_fcurt_info: n_hop at offset 76 is 1, at most 0 allowed");
    message.word(8 + 32, 5).word(44 + 32, 0);
    EXPECT_EQ(said("rib_fcurt_info", message.bytes()), "excess rib_fcurt_info: ends at 96, but the bytes end at 100");
}

} // namespace
