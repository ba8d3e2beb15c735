// The client beside a RIB that is late, starts anew, or cannot be heard.
#include "clients/route_client.h"

#include "base/text.h"
#include "lab/files/fabric_file.h"
#include "lab/fspf.h"
#include "lab/generator/fabric_generator.h"
#include "rib/service/answers.h"
#include "rib/service/rib_service.h"
#include "rib_codes.h"
#include "testing/capture.h"
#include "testing/fault_script.h"
#include "testing/literal_updates.h"
#include "testing/wanted_routes.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <sstream>

namespace ribkit::clients {
namespace {

using namespace std::chrono_literals;
using testing::printed_by;

constexpr const char *bus = "local:route_client_test";
constexpr bus::link_options patient{.patience = 1h};

lab::fabric generated() {
    return lab::parse_fabric(lab::generate_fabric({12, 3, lab::fabric_shape::ring, 1, 6}), "generated");
}

model::held_routes routes_of(const lab::fabric &f) {
    model::held_routes all;
    for (const lab::fabric_vsan &vsan : f.vsans()) {
        for (const auto &[to, what] : lab::fspf_routes(f, vsan.id)) {
            all[{vsan.id, to}] = {RIB_CLIENT_FSPF, what};
        }
    }
    return all;
}

model::held_routes held_by(rib::rib_service &rib) {
    rib.stop();
    return rib::active_routes(rib.tables());
}

/// Runs it with what it says on both outputs thrown away.
template <typename Action> void silently(const Action &action) {
    std::string thrown;
    ::testing::internal::CaptureStderr();
    printed_by([&] {
        try {
            action();
        } catch (const std::exception &error) {
            thrown = error.what();
        }
    });
    ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(thrown, "");
}

TEST(route_client, waits_for_a_rib_that_starts_later) {
    const lab::fabric f = generated();
    unicast_client client(bus, RIB_CLIENT_FSPF, {.link = patient});
    std::unique_ptr<rib::rib_service> rib;
    std::thread late([&] {
        std::this_thread::sleep_for(20ms);
        rib = std::make_unique<rib::rib_service>(bus);
    });
    silently([&] { EXPECT_EQ(client.converge(testing::wanted_by(f)).added, 3U * 11U); });
    late.join();
    EXPECT_EQ(held_by(*rib), routes_of(f));
}

TEST(route_client, gives_up_when_patience_ends) {
    const testing::fault_script script("clock virtual\n");
    unicast_client client(bus, RIB_CLIENT_FSPF, {.link = {.patience = 10min}});
    ::testing::internal::CaptureStderr();
    const std::string printed =
        printed_by([&] { EXPECT_THROW(client.converge(testing::wanted_by(generated())), bus::no_answer); });
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "ribkit: no answer from the RIB: nobody listens; asking again\n"
              "ribkit: waiting for a RIB at local:route_client_test, for 600s at most\n");
    EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), 1) << printed; // waiting is quiet
    EXPECT_EQ(qip_now(), 600'000'000U);
    EXPECT_EQ(client.traffic().sent(), 0U);
}

TEST(route_client, does_not_wait_longer_because_a_rib_is_there_that_loses_everything_but_probes) {
    const testing::fault_script script("clock virtual\ndrop every 3\n"); // an update, a probe and its answer, ...
    const rib::rib_service rib(bus);
    unicast_client client(bus, RIB_CLIENT_FSPF, {.link = {.patience = 2s}});
    silently([&] { EXPECT_THROW(client.converge(testing::wanted_by(generated())), bus::no_answer); });
    EXPECT_EQ(qip_now(), 2'000'000U);
    EXPECT_LT(client.traffic().sent(), 3U * 11U);
}

TEST(route_client, a_rib_that_starts_anew_is_told_everything) {
    lab::fabric f = generated();
    auto rib = std::make_unique<rib::rib_service>(bus);
    unicast_client client(bus, RIB_CLIENT_FSPF, {.link = patient});
    EXPECT_EQ(client.converge(testing::wanted_by(f)).added, 3U * 11U);
    EXPECT_FALSE(client.rib_started(0ms));
    rib.reset();
    rib = std::make_unique<rib::rib_service>(bus);
    EXPECT_EQ(client.converge(testing::wanted_by(f)).added, 3U * 11U);
    rib.reset();
    rib = std::make_unique<rib::rib_service>(bus);
    EXPECT_TRUE(client.rib_started(0ms));
    f.apply(f.events()[0]);
    EXPECT_EQ(client.converge(testing::wanted_by(f)).added, 3U * 11U);
    EXPECT_EQ(held_by(*rib), routes_of(f));
}

TEST(route_client, a_rib_that_starts_anew_meanwhile_is_told_everything_too) {
    const lab::fabric f = generated();
    auto rib = std::make_unique<rib::rib_service>(bus);
    size_t parts = 0;
    client_options options{.link = patient};
    options.progress = [&](const char *what, size_t, size_t) {
        if (std::string_view(what) == "routes sent" && ++parts == 2) { // of three VSANs
            rib.reset();
            rib = std::make_unique<rib::rib_service>(bus);
        }
    };
    unicast_client client(bus, RIB_CLIENT_FSPF, options);
    const size_t added = client.converge(testing::wanted_by(f)).added;
    EXPECT_TRUE(added == (2U + 3U) * 11U || added == (3U + 3U) * 11U) << added; // the last one was on its way
    EXPECT_EQ(held_by(*rib), routes_of(f));
}

TEST(route_client, has_new_patience_for_every_vsan) {
    // The RIB tells two groups that it starts. Then for each VSAN: the update fails, the RIB is asked whether it is
    // there, read, and sent the update again, each with an answer.
    const testing::fault_script script("clock virtual\nfail send 3 EIO\nfail send 10 EIO\nfail send 17 EIO\n");
    unicast_client client(bus, RIB_CLIENT_FSPF, {.link = {.patience = 60ms}}); // a pause of 50 ms, and one of 10 ms
    rib::rib_service rib(bus);
    silently([&] { EXPECT_EQ(client.converge(testing::wanted_by(generated())).added, 3U * 11U); });
    EXPECT_EQ(held_by(rib), routes_of(generated()));
}

TEST(route_client, takes_over_what_another_run_has_left) {
    lab::fabric f = generated();
    rib::rib_service rib(bus);
    unicast_client(bus, RIB_CLIENT_FSPF, {}).converge(testing::wanted_by(f));
    f.apply(f.events()[0]);
    unicast_client client(bus, RIB_CLIENT_FSPF, {});
    client.start_over();
    const client_traffic traffic = client.converge(testing::wanted_by(f));
    EXPECT_EQ(traffic.added, 0U);
    EXPECT_GT(traffic.changed, 0U);
    EXPECT_LT(traffic.changed, 3U * 11U);
    EXPECT_EQ(traffic.refused, 0U);
    EXPECT_EQ(held_by(rib), routes_of(f));
}

TEST(route_client, routes_of_other_clients_are_not_its_own) {
    const lab::fabric f = generated();
    rib::rib_service rib(bus);
    bus::rib_link other(bus, RIB_CLIENT_MCAST);
    const model::route_table theirs{{{0xfffffa, 0xffffff}, {7, RIB_FLAG_ACTIVE, {}}}};
    auto update = testing::literal_update({RIB_CLIENT_MCAST, 1, RIB_OPER_UPDATE, model::changes_between({}, theirs)});
    other.ask(RIBKIT_OPCODE_FCURT_UPDATE, update);
    unicast_client client(bus, RIB_CLIENT_FSPF, {});
    client.start_over();
    EXPECT_EQ(client.converge(testing::wanted_by(f)).deleted, 0U);
    model::held_routes expected = routes_of(f);
    expected[{1, {0xfffffa, 0xffffff}}] = {RIB_CLIENT_MCAST, {7, RIB_FLAG_ACTIVE, {}}};
    EXPECT_EQ(held_by(rib), expected);
}

TEST(route_client, routes_behind_nearer_ones_of_other_clients_are_its_own_all_the_same) {
    const lab::fabric f = generated();
    rib::rib_service rib(bus);
    clients::unicast_client client(bus, RIB_CLIENT_FSPF, {});
    client.converge(testing::wanted_by(f));
    model::route_table theirs = lab::fspf_routes(f, 1);
    theirs.erase(theirs.begin());
    auto update = testing::literal_update({RIB_CLIENT_CONFIG, 1, RIB_OPER_UPDATE, model::changes_between({}, theirs)});
    bus::rib_link(bus, RIB_CLIENT_CONFIG).ask(RIBKIT_OPCODE_FCURT_UPDATE, update);
    client.start_over();
    EXPECT_EQ(client.converge(testing::wanted_by(f)).sent(), 0U);
    rib.stop();
    for (const auto &[to, what] : lab::fspf_routes(f, 1)) {
        EXPECT_NE(rib.tables().routes<rib::unicast>().find({1, to}, RIB_CLIENT_FSPF), nullptr);
    }
}

TEST(route_client, what_somebody_else_has_done_already_is_not_refused) {
    lab::fabric f = generated();
    rib::rib_service rib(bus);
    unicast_client first(bus, RIB_CLIENT_FSPF, {});
    unicast_client second(bus, RIB_CLIENT_FSPF, {});
    first.converge(testing::wanted_by(f));
    second.converge(testing::wanted_by(f));
    for (size_t link = 0; link < f.links().size(); link++) {
        f.apply({{}, link, false, {}});
    }
    EXPECT_EQ(first.converge(testing::wanted_by(f)).refused, 0U);
    const client_traffic again = second.converge(testing::wanted_by(f));
    EXPECT_EQ(again.sent(), 0U); // it was the other one's work
    EXPECT_TRUE(held_by(rib).empty());
}

// Then the answer is that the route is another client's.
TEST(route_client, what_is_gone_already_is_not_refused_where_others_have_the_destination) {
    lab::fabric f = generated();
    rib::rib_service rib(bus);
    unicast_client first(bus, RIB_CLIENT_FSPF, {});
    unicast_client second(bus, RIB_CLIENT_FSPF, {});
    first.converge(testing::wanted_by(f));
    second.converge(testing::wanted_by(f));
    for (const lab::fabric_vsan &vsan : f.vsans()) {
        auto theirs = testing::literal_update(
            {RIB_CLIENT_CONFIG, vsan.id, RIB_OPER_UPDATE, model::changes_between({}, lab::fspf_routes(f, vsan.id))});
        bus::rib_link(bus, RIB_CLIENT_CONFIG).ask(RIBKIT_OPCODE_FCURT_UPDATE, theirs);
    }
    for (size_t link = 0; link < f.links().size(); link++) {
        f.apply({{}, link, false, {}});
    }
    EXPECT_EQ(first.converge(testing::wanted_by(f)).refused, 0U);
    const client_traffic again = second.converge(testing::wanted_by(f));
    EXPECT_EQ(again.refused, 0U);
    EXPECT_EQ(again.sent(), 0U);
}

enum class queries : unsigned char { find_nothing, are_refused };

/// Refuses whatever comes without having looked at it.
class unwilling_rib {
  public:
    unwilling_rib(uint32_t result, queries queries) : result_(result), queries_(queries), handle_(bus) {
        EXPECT_EQ(qip_listen(handle_.number(), &ribkit_rib_address, 64), 0);
        thread_ = std::thread([this] { serve(); });
    }
    unwilling_rib(const unwilling_rib &) = delete;
    unwilling_rib &operator=(const unwilling_rib &) = delete;
    ~unwilling_rib() { end(); }

    /// @return messages that were refused
    size_t end() {
        handle_.close();
        if (thread_.joinable()) {
            qip_step_aside();
            thread_.join();
        }
        return refused_;
    }

  private:
    void serve() {
        const auto refused = encode(protocol::fcurt_response{result_, 0, 0, 0, 0});
        const auto empty = testing::literal_update({RIB_CLIENT_FSPF, 1, RIB_OPER_UPDATE, {}});
        const qip_recv_opts opts{{QIP_RECV_INCOMING}};
        for (qip_ref asked{}; qip_recv(handle_.number(), &asked, &opts) == 0; qip_drop(handle_.number(), &asked)) {
            const uint32_t opcode = qip_opcode_get(&asked);
            const bool finds = opcode == RIBKIT_OPCODE_FCURT_QUERY && queries_ == queries::find_nothing;
            refused_ += finds || opcode == RIBKIT_OPCODE_PROBE ? 0 : 1;
            const void *answer = finds ? static_cast<const void *>(empty.data()) : refused.data();
            rib_wrap_qip_rsp(handle_.number(), &asked, answer,
                             static_cast<uint32_t>(finds ? empty.size() : refused.size()));
        }
    }

    uint32_t result_;
    queries queries_;
    bus::service_handle handle_;
    size_t refused_ = 0;
    std::thread thread_;
};

TEST(route_client, a_refusal_that_names_no_vsan_is_of_the_one_that_was_sent) {
    const lab::fabric f = generated();
    const unwilling_rib rib(RIB_OUT_OF_MEMORY, queries::find_nothing);
    unicast_client client(bus, RIB_CLIENT_FSPF, {.link = patient});
    silently([&] { EXPECT_EQ(client.converge(testing::wanted_by(f)).refused, 3U * 11U); });
}

/// What is said when the RIB of this bus has refused the same time after time.
std::string given_up(const std::string &result) {
    return "the RIB at local:route_client_test refuses what client 12 sends: " + result +
           "; its [[who]] tables may not let this name use client 12, and what it says on standard error names whom it "
           "refuses";
}

TEST(route_client, gives_up_where_the_rib_refuses_the_same_time_after_time) {
    const lab::fabric f = generated();
    for (const auto how : {queries::find_nothing, queries::are_refused}) {
        unwilling_rib rib(RIB_BAD_PARAMETERS, how);
        unicast_client client(bus, RIB_CLIENT_FSPF, {.link = patient});
        client.start_over();
        std::string thrown;
        ::testing::internal::CaptureStderr();
        try {
            client.converge(testing::wanted_by(f));
        } catch (const bus::no_answer &why) {
            thrown = why.what();
        }
        EXPECT_EQ(::testing::internal::GetCapturedStderr(),
                  "ribkit: the RIB refuses what came: bad parameters; asking again\n");
        EXPECT_EQ(thrown, given_up("bad parameters"));
        EXPECT_EQ(client.traffic().sent(), 0U);
        EXPECT_EQ(rib.end(), 5U);
    }
}

TEST(route_client, without_patience_says_the_same_of_the_first_refusal) {
    const unwilling_rib rib(RIB_EXCESS_DATA, queries::find_nothing);
    unicast_client client(bus, RIB_CLIENT_FSPF, {.link = {.patience = 0ms}});
    ::testing::internal::CaptureStderr();
    try {
        client.converge(testing::wanted_by(generated()));
        ADD_FAILURE();
    } catch (const bus::no_answer &why) {
        EXPECT_EQ(why.what(), given_up("excess qip data"));
    }
    ::testing::internal::GetCapturedStderr();
}

// Behind the news that the RIB has started, an update is answered, the RIB probed and read: then it is sent again.
TEST(route_client, what_is_damaged_on_the_way_is_sent_again) {
    std::string damage = "clock virtual\n";
    for (const int update : {3, 9, 15, 21, 29, 35, 41, 47}) { // of two VSANs; the next one arrives
        damage += base::joined("truncate ", update, " 900\n");
    }
    const testing::fault_script script(damage);
    rib::rib_service rib(bus);
    unicast_client client(bus, RIB_CLIENT_FSPF, {.link = patient});
    silently([&] {
        const client_traffic traffic = client.converge(testing::wanted_by(generated()));
        EXPECT_EQ(traffic.added, 3U * 11U);
        EXPECT_EQ(traffic.refused, 0U);
    });
    EXPECT_EQ(held_by(rib), routes_of(generated()));
}

TEST(route_client, envelopes_leave_the_same_tables) {
    lab::fabric f = generated();
    rib::rib_service rib(bus);
    unicast_client client(bus, RIB_CLIENT_FSPF, {.link = {.envelopes = true}});
    EXPECT_EQ(client.converge(testing::wanted_by(f)).added, 3U * 11U);
    f.apply(f.events()[0]);
    EXPECT_EQ(client.converge(testing::wanted_by(f)).refused, 0U);
    EXPECT_EQ(held_by(rib), routes_of(f));
    EXPECT_EQ(qip_refs_held(), 0U);
}

// Messages are not disturbed so that an old one can come after newer ones: nothing on the way numbers them.
std::string random_script(std::mt19937 &random) {
    std::ostringstream text;
    const auto one_in = [&] { return 5 + random() % 12; };
    text << "clock virtual\nseed " << random() << "\ndrop one-in " << one_in() << "\nduplicate one-in " << one_in()
         << "\ntruncate one-in " << one_in() << ' ' << random() % 1200 << "\ndelay one-in " << one_in()
         << " 500\nfail send one-in " << one_in() << " EIO\nfail recv one-in " << one_in()
         << " ENOMEM\nfail drop one-in " << one_in() << " EIO\n";
    return text.str();
}

/// All that a whole run has come to.
client_traffic played(unicast_client &client, lab::fabric f) {
    client_traffic total = client.converge(testing::wanted_by(f));
    for (const lab::fabric_event &event : f.events()) {
        for (const uint64_t later = qip_now() + 1'000'000; qip_now() < later;) {
            client.rib_started(1s); // whatever is late arrives before something newer
        }
        f.apply(event);
        total += client.converge(testing::wanted_by(f));
    }
    return total;
}

TEST(route_client, whatever_is_disturbed_the_tables_are_right_in_the_end) {
    client_traffic quiet;
    {
        const testing::fault_script script("clock virtual\n");
        unicast_client client(bus, RIB_CLIENT_FSPF, {});
        const rib::rib_service rib(bus);
        quiet = played(client, generated());
    }
    const int rounds = std::getenv("RIBKIT_ALL") == nullptr ? 60 : 1000;
    std::mt19937 random(31);
    for (int round = 0; round < rounds; round++) {
        const std::string text = random_script(random);
        SCOPED_TRACE(text);
        lab::fabric f = generated();
        client_traffic total;
        silently([&] {
            const testing::fault_script script(text);
            unicast_client client(bus, RIB_CLIENT_FSPF,
                                  {.message_limit = protocol::smallest_message_limit + random() % 2000,
                                   .link = {.envelopes = round % 2 == 0, .patience = 24h}});
            rib::rib_service rib(bus);
            total = played(client, f);
            for (const lab::fabric_event &event : f.events()) {
                f.apply(event);
            }
            EXPECT_TRUE(held_by(rib) == routes_of(f));
        });
        EXPECT_EQ(total.refused, 0U);
        EXPECT_EQ(total.added, quiet.added);
        EXPECT_EQ(total.deleted, quiet.deleted);
        EXPECT_EQ(total.changed, quiet.changed);
        EXPECT_EQ(qip_refs_held(), 0U);
    }
}

} // namespace
} // namespace ribkit::clients
