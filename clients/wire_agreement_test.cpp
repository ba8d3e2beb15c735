// RIBs of other versions: what a client uses has to be the same, or nothing is sent.
#include "clients/wire_agreement.h"

#include "clients/question.h"
#include "rib/service/rib_service.h"
#include "testing/capture.h"
#include "testing/fault_script.h"
#include "testing/other_rib.h"

#include <gtest/gtest.h>
#include <string>

namespace ribkit::clients {
namespace {

using bytes = std::vector<uint8_t>;

constexpr const char *url = "local:wire_agreement";

/// What a client says that finds this RIB; "" where it is content.
std::string said_of(bus::rib_link &link) {
    try {
        find_rib(link);
    } catch (const other_formats &why) {
        return why.what();
    }
    return "";
}

TEST(wire_agreement, is_there_with_our_own_rib) {
    const rib::rib_service service(url);
    for (const bool envelopes : {false, true}) {
        bus::rib_link link(url, RIB_CLIENT_TEST, {envelopes});
        EXPECT_EQ(said_of(link), "");
        EXPECT_EQ(link.take_traffic().messages, 0U);
    }
}

TEST(wire_agreement, names_the_message_that_differs) {
    const testing::other_rib rib(url, testing::formats_but("rib_fcurt_update"));
    bus::rib_link link(url, RIB_CLIENT_TEST);
    EXPECT_EQ(said_of(link), "the RIB at local:wire_agreement has another format of rib_fcurt_update: it is of another "
                             "version, and nothing is sent to it");
}

TEST(wire_agreement, counts_what_else_differs) {
    bytes theirs = testing::formats_but("rib_fcurt_update");
    theirs[protocol::wire_digests.size + 3 * protocol::wire_digest.size] = 'x';
    const testing::other_rib rib(url, theirs);
    bus::rib_link link(url, RIB_CLIENT_TEST);
    EXPECT_NE(said_of(link).find("rib_fcurt_update and 1 other:"), std::string::npos);
}

TEST(wire_agreement, counts_all_that_differ) {
    bytes theirs = testing::formats_but("rib_fcurt_update");
    for (const size_t message : {3, 4}) {
        theirs[protocol::wire_digests.size + message * protocol::wire_digest.size] = 'x';
    }
    const testing::other_rib rib(url, theirs);
    bus::rib_link link(url, RIB_CLIENT_TEST);
    EXPECT_NE(said_of(link).find("rib_fcurt_update and 2 others:"), std::string::npos) << said_of(link);
}

TEST(wire_agreement, of_a_module_is_not_waited_for_where_the_rib_is_silent) {
    const testing::fault_script script("clock virtual\n");
    const bus::service_handle silent(url);
    ASSERT_EQ(qip_listen(silent.number(), &ribkit_rib_address, 4), 0);
    EXPECT_NO_THROW(compare_formats_of_modules(url, {}));
    EXPECT_EQ(qip_now(), 1'000'000U);
}

TEST(wire_agreement, is_not_needed_of_what_only_modules_use) {
    const testing::other_rib rib(url, testing::formats_but("fib_fcu_path"));
    bus::rib_link link(url, RIB_CLIENT_TEST);
    EXPECT_EQ(said_of(link), "");
}

TEST(wire_agreement, of_a_module_is_about_what_it_uses) {
    const auto said = [] {
        try {
            compare_formats_of_modules(url, {});
        } catch (const other_formats &why) {
            return std::string(why.what());
        }
        return std::string();
    };
    EXPECT_EQ(said(), ""); // nobody is there
    {
        const testing::other_rib rib(url, testing::formats_but("rib_fcurt_update"));
        EXPECT_EQ(said(), "");
    }
    const testing::other_rib rib(url, testing::formats_but("fib_fcu_path"));
    EXPECT_NE(said().find("has another format of fib_fcu_path:"), std::string::npos);
}

TEST(wire_agreement, is_taken_for_granted_of_a_rib_that_does_not_know_the_question) {
    const testing::other_rib rib(url, testing::refusal_of_rib(RIB_NOT_SUPPORTED));
    bus::rib_link link(url, RIB_CLIENT_TEST);
    EXPECT_EQ(said_of(link), "");
}

TEST(wire_agreement, is_not_found_in_answers_that_are_cut) {
    for (const size_t size : {0U, 7U, 8U, 40U, 41U}) {
        bytes cut = protocol::own_wire_digests();
        cut.resize(size);
        const testing::other_rib rib(url, cut);
        bus::rib_link link(url, RIB_CLIENT_TEST, {false, std::chrono::milliseconds(50)});
        testing::all_printed_by([&] { EXPECT_THROW(find_rib(link), bus::no_answer) << size; });
    }
}

} // namespace
} // namespace ribkit::clients
