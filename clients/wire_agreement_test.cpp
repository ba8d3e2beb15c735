// RIBs of other versions: what a client uses has to be the same, or nothing is sent.
#include "clients/wire_agreement.h"

#include "bus/service_handle.h"
#include "clients/question.h"
#include "protocol/route_messages.h"
#include "protocol/wire_digests.h"
#include "rib/service/rib_service.h"
#include "rib_codes.h"
#include "ribkit_rib.h"
#include "testing/capture.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <utility>

namespace ribkit::clients {
namespace {

using bytes = std::vector<uint8_t>;

constexpr const char *url = "local:wire_agreement";

bytes refusal(uint32_t result) {
    const auto words = encode(protocol::fcurt_response{result, 0, 0, 0, 0});
    return {words.begin(), words.end()};
}

/// Answers the question for its formats with given bytes, and anything else with a refusal.
class other_rib {
  public:
    explicit other_rib(bytes formats) : formats_(std::move(formats)), handle_(url) {
        EXPECT_EQ(qip_listen(handle_.number(), &ribkit_rib_address, 64), 0);
        thread_ = std::thread([this] { serve(); });
    }
    other_rib(const other_rib &) = delete;
    other_rib &operator=(const other_rib &) = delete;
    ~other_rib() {
        handle_.close();
        thread_.join();
    }

  private:
    void serve() {
        const bytes refused = refusal(RIB_NOT_SUPPORTED);
        for (qip_ref ref{}; qip_recv(handle_.number(), &ref, nullptr) == 0; qip_drop(handle_.number(), &ref)) {
            const bytes &said = qip_opcode_get(&ref) == RIBKIT_OPCODE_WIRE_DIGESTS ? formats_ : refused;
            qip_send(handle_.number(), nullptr, 0, said.data(), static_cast<uint32_t>(said.size()), nullptr, &ref,
                     nullptr);
        }
    }

    const bytes formats_;
    bus::service_handle handle_;
    std::thread thread_;
};

/// What a client says that finds this RIB; "" where it is content.
std::string said_of(bus::rib_link &link) {
    try {
        find_rib(link);
    } catch (const other_formats &why) {
        return why.what();
    }
    return "";
}

bytes altered(size_t message) {
    bytes theirs = protocol::own_wire_digests();
    theirs[protocol::wire_digests.size + message * protocol::wire_digest.size + 31] ^= 1;
    return theirs;
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
    const other_rib rib(altered(2));
    bus::rib_link link(url, RIB_CLIENT_TEST);
    EXPECT_EQ(said_of(link), "the RIB at local:wire_agreement has another format of rib_fcurt_update: it is of another "
                             "version, and nothing is sent to it");
}

TEST(wire_agreement, counts_what_else_differs) {
    bytes theirs = altered(2);
    theirs[protocol::wire_digests.size + 3 * protocol::wire_digest.size] = 'x';
    const other_rib rib(theirs);
    bus::rib_link link(url, RIB_CLIENT_TEST);
    EXPECT_NE(said_of(link).find("rib_fcurt_update and 1 other:"), std::string::npos);
}

TEST(wire_agreement, is_not_needed_of_what_only_modules_use) {
    bytes theirs = protocol::own_wire_digests();
    const std::string from = "fib_fcu_path";
    const auto at = std::search(theirs.begin(), theirs.end(), from.begin(), from.end());
    ASSERT_NE(at, theirs.end());
    *at = 'x';
    const other_rib rib(theirs);
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
    bytes theirs = altered(2);
    {
        const other_rib rib(theirs);
        EXPECT_EQ(said(), "");
    }
    const std::string from = "fib_fcu_path";
    *std::search(theirs.begin(), theirs.end(), from.begin(), from.end()) = 'x';
    const other_rib rib(theirs);
    EXPECT_NE(said().find("has another format of fib_fcu_path:"), std::string::npos);
}

TEST(wire_agreement, is_taken_for_granted_of_a_rib_that_does_not_know_the_question) {
    const other_rib rib(refusal(RIB_NOT_SUPPORTED));
    bus::rib_link link(url, RIB_CLIENT_TEST);
    EXPECT_EQ(said_of(link), "");
}

TEST(wire_agreement, is_not_found_in_answers_that_are_cut) {
    for (const size_t size : {0U, 7U, 8U, 40U, 41U}) {
        bytes cut = protocol::own_wire_digests();
        cut.resize(size);
        const other_rib rib(cut);
        bus::rib_link link(url, RIB_CLIENT_TEST, {false, std::chrono::milliseconds(50)});
        testing::all_printed_by([&] { EXPECT_THROW(find_rib(link), bus::no_answer) << size; });
    }
}

} // namespace
} // namespace ribkit::clients
