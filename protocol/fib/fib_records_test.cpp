// A module's record, VSANs and rewrites against the same messages put together byte after byte, and back.
#include "protocol/fib/fib_records.h"

#include "protocol/fib/fib_checks.h"
#include "rib_codes.h"
#include "testing/literal_updates.h"

#include <gtest/gtest.h>

namespace ribkit::protocol {
namespace {

bytes words(std::initializer_list<uint32_t> numbers) {
    bytes all;
    for (const uint32_t number : numbers) {
        testing::append_word(all, number);
    }
    return all;
}

const model::module_node module{.number = 2,
                                .type = 0,
                                .node = 0x401,
                                .address = 0xff000401,
                                .state = model::fib_state::active,
                                .instance = 0x12345678,
                                .sequence = 77,
                                .entries = 9,
                                .ports = {{1, 2, 3, 4, 5, true, 6, 0x01020003, 7, 20, 2}, {}}};

TEST(fib_records, a_module_is_the_bytes_that_its_formats_say) {
    const bytes message = module_message(module);
    const bytes expected =
        words({0x01000000, 0x00020401, 0xff000401, 4, 0x01000000, 0x12345678, 77, 9, 0x01020304, 0x05800006,
               0x01020003, 7,          20,         2, 0,          0,          0,  0, 0,          0});
    EXPECT_EQ(message, expected);
    EXPECT_EQ(check_module_message(message, nullptr), RIB_OK);
    EXPECT_EQ(module_of(message), module);
    EXPECT_EQ(port_message(module.ports[0]), bytes(message.begin() + 32, message.begin() + 56));
}

TEST(fib_records, a_module_cut_anywhere_is_refused) {
    bytes message = module_message(module);
    for (size_t size = 0; size < message.size(); size++) {
        EXPECT_EQ(check_module_message(std::span(message).first(size), nullptr), RIB_BAD_PARAMETERS) << size;
    }
    message.push_back(0);
    EXPECT_EQ(check_module_message(message, nullptr), RIB_EXCESS_DATA);
}

TEST(fib_records, vsans_are_the_bytes_that_their_format_says) {
    const std::pair<uint32_t, model::vsan_attributes> vsans[] = {
        {20, {model::vsan_state::suspended, model::flow_balance::exchange, true, 500}}};
    const bytes message = vsan_update(77, vsans);
    EXPECT_EQ(message, words({77, 1, 500, 0x03220014}));
    EXPECT_EQ(vsans_of(codec::view<wire::vsan_update>(message.data())),
              (std::vector<std::pair<uint32_t, model::vsan_attributes>>{vsans[0]}));
}

TEST(fib_records, rewrites_are_the_bytes_that_their_format_says) {
    const rewrite_path path{{20, 7, {0x0a0000, 0xff0000}, {0x0b0101, 0xffffff}}, {30, 0x0c0101, 0x0d0101}};
    bytes message = rewrite_update({FIB_OPER_UPDATE, 20, 77}, std::span(&path, 1));
    EXPECT_EQ(message,
              words({1, 20, 1, 77, 20, 7, 30, 0, 0x0a0000, 0xff0000, 0x0b0101, 0xffffff, 0x0c0101, 0x0d0101, 0}));
    EXPECT_EQ(check_rewrite_update(message, nullptr), RIB_OK);
    EXPECT_EQ(head_of(codec::view<wire::vsan_rewrite_update>(message.data())),
              (model::fib_head{FIB_OPER_UPDATE, 20, 77}));
    EXPECT_EQ(rewrites_of(message), std::vector{path});
    for (size_t size = 0; size < message.size(); size++) {
        EXPECT_EQ(check_rewrite_update(std::span(message).first(size), nullptr), RIB_BAD_PARAMETERS) << size;
    }
    const model::fib_answer said{RIB_HW_FULL, FIB_OPER_UPDATE, 20, 3, 77};
    const bytes answer = rewrite_answer(said);
    EXPECT_EQ(answer, words({RIB_HW_FULL, 1, 20, 3, 77}));
    EXPECT_EQ(answer_of(codec::view<wire::vsan_rewrite_rsp>(answer.data())), said);
}

} // namespace
} // namespace ribkit::protocol
