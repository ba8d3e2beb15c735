// The protocol manual is what the rows say, and the rows name messages and numbers that there are.
#include "protocol/manual.h"

#include "codec/message.h"
#include "protocol/claim.h"
#include "protocol/fib/fib_requests.h"
#include "protocol/query_kinds.h"
#include "protocol/requests.h"
#include "protocol/wire_digests.h"
#include "rib_text.h"
#include "testing/golden.h"

#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <string>

namespace ribkit::protocol {
namespace {

using vocabulary = decltype(rib_oper_to_str);

bool has_text(vocabulary *texts, uint32_t number) {
    std::array<char, 64> text{};
    texts(number, text.data());
    return std::string_view(text.data()).find("??") == std::string_view::npos;
}

/// Every number of a vocabulary that can be a type: single bits, and what the rows themselves have.
template <class Rows, class NumberOf> void expect_all_numbers(vocabulary *texts, const Rows &rows, NumberOf number_of) {
    std::set<uint32_t> known;
    for (const auto &row : rows) {
        EXPECT_TRUE(has_text(texts, number_of(row))) << number_of(row);
        EXPECT_TRUE(known.insert(number_of(row)).second) << number_of(row);
    }
    for (uint32_t bit = 0; bit < 32; bit++) {
        EXPECT_EQ(known.contains(1U << bit), has_text(texts, 1U << bit)) << bit;
    }
}

TEST(protocol_manual, is_what_the_rows_say) { testing::expect_golden("docs/protocol.md", protocol_manual()); }

std::vector<request_row> all_requests() {
    std::vector<request_row> all(std::begin(requests), std::end(requests));
    all.insert(all.end(), std::begin(fib_requests), std::end(fib_requests));
    return all;
}

TEST(requests, are_found_by_their_opcodes) {
    for (const request_row &row : requests) {
        EXPECT_EQ(find_request(row.opcode), &row);
        EXPECT_EQ(find_fib_request(row.opcode), nullptr) << row.name;
    }
    for (const request_row &row : fib_requests) {
        EXPECT_EQ(find_fib_request(row.opcode), &row);
    }
}

TEST(requests, name_messages_that_there_are) {
    std::set<uint32_t> opcodes;
    for (const request_row &row : all_requests()) {
        EXPECT_TRUE(opcodes.insert(row.opcode).second) << row.name;
        std::string words = std::string(row.message) + ' ' + row.answer;
        std::replace(words.begin(), words.end(), '+', ' ');
        std::istringstream names(words);
        for (std::string name; names >> name;) {
            EXPECT_TRUE(codec::find_message(name) != nullptr || name == claim.name || name == wire_digests.name ||
                        std::any_of(codec::forms().begin(), codec::forms().end(),
                                    [&](const auto &form) { return form.name == name; }))
                << row.name << ' ' << name;
        }
    }
    EXPECT_EQ(find_request(0x999), nullptr);
}

TEST(requests, explain_every_number_of_a_vocabulary) {
    const auto number = [](const meaning_row &row) { return row.number; };
    expect_all_numbers(rib_oper_to_str, operations, number);
    expect_all_numbers(rib_action_to_str, actions, number);
    expect_all_numbers(fib_oper_to_str, fib_operations, number);
    expect_all_numbers(rib_verf_to_str, verifications, number);
    const auto type = [](const query_kind &kind) { return kind.type; };
    expect_all_numbers(rib_fcurt_type_to_str, unicast_kinds, type);
    expect_all_numbers(rib_fcmrt_type_to_str, multicast_kinds, type);
    expect_all_numbers(rib_query_to_str, state_kinds, type);
}

TEST(requests, explain_every_type_of_label_query) {
    for (uint32_t type = 0; type < 0x2000; type++) {
        EXPECT_EQ(find_label_kind(type) != nullptr, has_text(rib_fclrt_type_to_str, type)) << type;
    }
}

} // namespace
} // namespace ribkit::protocol
