// Who compares digests learns which message differs, whatever else the other program says.
#include "protocol/wire_digests.h"

#include "catalogue/wire_digest.h"
#include "codec/fingerprint.h"
#include "codec/message.h"
#include "codec/view.h"

#include <gtest/gtest.h>

namespace ribkit::protocol {
namespace {

using names = std::vector<std::string_view>;

TEST(wire_digests, are_those_of_the_catalogue) {
    EXPECT_EQ(digest_of_all(), catalogue::wire_digest());
    const auto ours = own_wire_digests();
    ASSERT_EQ(check_wire_digests(ours.data(), static_cast<uint32_t>(ours.size()), nullptr), 0U);
    const codec::view<wire_digests> told(ours.data());
    EXPECT_EQ(told.get<"all">(), catalogue::wire_digest());
    ASSERT_EQ(told.get<"n_message">(), codec::messages().size());
    auto entry = told.list<"message">().begin();
    for (const codec::message &message : codec::messages()) {
        EXPECT_EQ((*entry).text<"name">(), message.name);
        EXPECT_EQ((*entry).get<"digest">(), codec::wire_fingerprint(*message.wire)) << message.name;
        ++entry;
    }
}

TEST(wire_digests, of_the_same_program_differ_in_nothing) {
    EXPECT_EQ(different_messages(own_wire_digests(), ""), names{});
}

TEST(wire_digests, tell_each_message_that_is_otherwise_there) {
    for (size_t i = 0; i < codec::messages().size(); i++) {
        auto theirs = own_wire_digests();
        theirs[wire_digests.size + i * wire_digest.size + wire_digest.at("digest")] ^= 1;
        const std::string_view name = codec::messages()[i].name;
        EXPECT_EQ(different_messages(theirs, ""), names{name});
        EXPECT_EQ(different_messages(theirs, "rib_"), name.starts_with("rib_") ? names{name} : names{});
    }
}

TEST(wire_digests, tell_what_the_other_does_not_know_and_mind_nothing_that_it_knows_more) {
    auto theirs = own_wire_digests();
    theirs[wire_digests.size] = 'x';
    EXPECT_EQ(different_messages(theirs, ""), names{"rib_fclrt_update"});
    auto more = own_wire_digests();
    more.resize(more.size() + wire_digest.size, 0xff);
    codec::writable_view<wire_digests>(more.data())
        .set<"n_message">(static_cast<uint32_t>(codec::messages().size() + 1));
    EXPECT_EQ(different_messages(more, ""), names{});
}

TEST(wire_digests, that_are_cut_anywhere_are_refused) {
    const auto ours = own_wire_digests();
    for (uint32_t size = 0; size < ours.size(); size++) {
        const std::vector<uint8_t> cut(ours.begin(), ours.begin() + static_cast<ptrdiff_t>(size));
        EXPECT_NE(check_wire_digests(cut.data(), size, nullptr), 0U) << size;
    }
}

} // namespace
} // namespace ribkit::protocol
