// A RIB whose answers and notifications arrive damaged: clients drop them, and each leaves one line in the history.
#include "clients/change_reader.h"
#include "clients/question.h"
#include "clients/registration.h"
#include "clients/route_client.h"
#include "clients/state_reader.h"
#include "clients/table_reader.h"
#include "protocol/table_messages.h"
#include "rib_codes.h"
#include "ribkit_rib.h"
#include "testing/capture.h"
#include "testing/literal_updates.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <mutex>
#include <thread>

namespace ribkit::clients {
namespace {

using bytes = std::vector<uint8_t>;

constexpr const char *url = "local:damaged_answers";

/// Answers every request with the bytes that it has been given.
class damaging_rib {
  public:
    damaging_rib() : handle_(url) {
        EXPECT_EQ(qip_listen(handle_.number(), &ribkit_rib_address, 64), 0);
        thread_ = std::thread([this] { serve(); });
    }
    damaging_rib(const damaging_rib &) = delete;
    damaging_rib &operator=(const damaging_rib &) = delete;
    ~damaging_rib() {
        handle_.close();
        thread_.join();
    }

    void answer_with(bytes answer) {
        const std::scoped_lock locked(lock_);
        answer_ = std::move(answer);
    }
    /// Each answer is the one before with one more at this place.
    void count_on_at(size_t place) {
        const std::scoped_lock locked(lock_);
        counting_ = place;
    }

    void notify(uint32_t opcode, const bytes &payload) const {
        EXPECT_EQ(qip_send(handle_.number(), &ribkit_listeners_address, opcode, payload.data(),
                           static_cast<uint32_t>(payload.size()), nullptr, nullptr, nullptr),
                  0);
    }

  private:
    void serve() {
        for (qip_ref ref{}; qip_recv(handle_.number(), &ref, nullptr) == 0; qip_drop(handle_.number(), &ref)) {
            const std::scoped_lock locked(lock_);
            qip_send(handle_.number(), nullptr, 0, answer_.data(), static_cast<uint32_t>(answer_.size()), nullptr, &ref,
                     nullptr);
            if (counting_ != 0) {
                answer_[counting_]++;
            }
        }
    }

    std::mutex lock_;
    bytes answer_;
    size_t counting_ = 0;
    bus::service_handle handle_;
    std::thread thread_;
};

size_t lines_about(const std::string &what) {
    const std::string text = testing::printed_by(yelk_hist_print);
    size_t lines = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
        lines++;
    }
    return lines;
}

bytes words(std::initializer_list<uint32_t> numbers) {
    bytes all;
    for (const uint32_t number : numbers) {
        testing::append_word(all, number);
    }
    return all;
}

bytes routes() {
    return testing::literal_update({RIB_CLIENT_FSPF,
                                    1,
                                    RIB_OPER_UPDATE,
                                    {{RIB_ACTION_ADD, {0x020000, RIB_MASK_DOMAIN}, {500, 0, {{0x01010001, 2}}}}}});
}

class damaged_answers : public ::testing::Test {
  protected:
    void TearDown() override { yelk_hist_clear(); }

    static void read() {
        bus::rib_link link(url, RIB_CLIENT_FSPF);
        read_table<unicast_table>(link, {RIB_CLIENT_FSPF, 1}, [](auto &&...) {});
    }
    static void send(bool in_envelope) {
        unicast_client client(url, RIB_CLIENT_FSPF, {.link = {.envelopes = in_envelope}});
        bytes update = routes();
        client.exchange(update);
    }

    /// What a client does with an answer ends with an exception, and leaves a line.
    template <class Ask> void expect_dropped(const bytes &answer, const Ask &ask) {
        rib.answer_with(answer);
        yelk_hist_clear();
        testing::printed_by([&] { EXPECT_THROW(ask(), bus::no_answer) << answer.size(); });
        EXPECT_EQ(lines_about("client: answer of"), 1U) << answer.size();
        EXPECT_EQ(lines_about("client:"), 1U) << answer.size();
    }

    /// Every beginning of an answer, and one byte more than it has.
    template <class Ask> void expect_every_length_dropped(const bytes &answer, const Ask &ask) {
        for (size_t size = 0; size <= answer.size() + 1; size++) {
            bytes other = answer;
            other.resize(size);
            if (size != answer.size()) {
                expect_dropped(other, ask);
            }
        }
    }

    damaging_rib rib;
};

TEST_F(damaged_answers, of_any_length_to_an_update_are_dropped) {
    expect_every_length_dropped(words({RIB_OK, RIB_OPER_UPDATE, 1, 1, 1}), [] { send(false); });
}

TEST_F(damaged_answers, of_any_length_in_an_envelope_are_dropped) {
    bytes answer = words({0, 20, 0});
    answer.resize(112);
    const bytes response = words({RIB_OK, RIB_OPER_UPDATE, 1, 1, 1});
    answer.insert(answer.end(), response.begin(), response.end());
    expect_every_length_dropped(answer, [] { send(true); });
}

TEST_F(damaged_answers, of_any_length_to_a_query_are_dropped) {
    expect_every_length_dropped(routes(), [] { read(); });
}

TEST_F(damaged_answers, that_announce_more_than_they_hold_are_dropped) {
    const bytes sound = routes();
    for (const size_t count_at : {size_t{12}, size_t{16}, sound.size() - 12}) {
        for (const uint32_t count : {241U, 0x7fffffffU, UINT32_MAX}) {
            bytes answer = sound;
            for (const int shift : {24, 16, 8, 0}) {
                answer[count_at + static_cast<size_t>(3 - shift / 8)] = static_cast<uint8_t>(count >> shift);
            }
            expect_dropped(answer, [] { read(); });
        }
    }
}

TEST_F(damaged_answers, with_what_was_not_asked_for_are_dropped) {
    bytes answer = routes();
    answer[7] = 2; // the VSAN
    expect_dropped(answer, [] { read(); });
}

/// What reads the RIB's tables and lists.
const std::vector<std::function<void(bus::rib_link &)>> readers{
    [](auto &link) { read_table<unicast_table>(link, {RIB_CLIENT_FSPF}, [](auto &&...) {}); },
    [](auto &link) { read_table<multicast_table>(link, {RIB_CLIENT_FSPF}, [](auto &&...) {}); },
    [](auto &link) { read_table<label_table>(link, {RIB_CLIENT_FSPF}, [](auto &&...) {}); },
    [](auto &link) { read_databases(link, {RIB_CLIENT_FSPF}); },
    [](auto &link) { read_domains(link, {RIB_CLIENT_FSPF}); },
    [](auto &link) { read_vsans(link, {RIB_CLIENT_FSPF}); },
    [](auto &link) { read_versions(link, {RIB_CLIENT_FSPF}); },
    [](auto &link) { read_registrations(link, RIB_CLIENT_FSPF); },
    [](auto &link) { read_modules(link, RIB_CLIENT_FSPF); },
    [](auto &link) { read_structure(link, RIB_CLIENT_FSPF, 1); },
    [](auto &link) { read_verification(link, RIB_CLIENT_FSPF, 0x100); },
    [](auto &link) { read_log(link, RIB_CLIENT_FSPF, unicast_log); },
};

TEST_F(damaged_answers, to_any_question_are_dropped) {
    bus::rib_link link(url, RIB_CLIENT_FSPF);
    for (const auto &ask : readers) {
        for (const size_t size : {0, 1, 3, 4, 5, 7, 9, 12, 15, 16, 19, 21, 24, 51, 979, 981}) {
            expect_dropped(bytes(size, 0xff), [&] { ask(link); });
        }
        expect_dropped(bytes(20, 0), [&] { ask(link); });
    }
}

bytes response_of(uint32_t result) { return words({result, 0, 0, 0, 0}); }

TEST_F(damaged_answers, about_other_vsans_are_dropped) {
    bus::rib_link link(url, RIB_CLIENT_FSPF);
    const auto read_vsan = [&] { read_databases(link, {.uuid = RIB_CLIENT_FSPF, .vsan = 5}); };
    for (const uint32_t vsan : {4U, 6U}) {
        expect_dropped(words({1, 0, vsan, 0, 0, 0, 0}), read_vsan);
    }
    rib.answer_with(words({1, 0, 5, 0, 0, 0, 0}));
    EXPECT_NO_THROW(read_vsan());
}

TEST_F(damaged_answers, about_another_structure_are_dropped) {
    bus::rib_link link(url, RIB_CLIENT_FSPF);
    expect_dropped(words({0, 3}), [&] { read_structure(link, RIB_CLIENT_FSPF, 4); });
}

TEST_F(damaged_answers, with_more_routes_than_were_asked_for_are_dropped) {
    testing::fcurt_update update{RIB_CLIENT_FSPF, 1, RIB_OPER_UPDATE, {}};
    for (uint32_t i = 0; i <= 1000; i++) {
        update.changes.push_back({RIB_ACTION_ADD, {i << 8, 0xffff00}, {}});
    }
    expect_dropped(testing::literal_update(update), [] { read(); });
}

TEST_F(damaged_answers, to_registrations_are_dropped_and_refusals_are_said) {
    bus::rib_link link(url, RIB_CLIENT_OPERATOR);
    change_reader reader(link, RIB_CLIENT_OPERATOR, {});
    expect_dropped(bytes(19), [&] { reader.start(); });
    rib.answer_with(response_of(RIB_NOT_SUPPORTED));
    EXPECT_THROW(reader.start(), refused_question);
    registration named(link, RIB_CLIENT_FSPF, "name", {});
    const auto said = [&] { return testing::all_printed_by([&] { named.keep(); }); };
    EXPECT_EQ(said(), "ribkit: the RIB does not register client 12: " + bus::result_text(RIB_NOT_SUPPORTED) + "\n");
    EXPECT_EQ(said(), "") << "it is not time yet";
}

TEST_F(damaged_answers, to_registrations_are_not_needed_by_who_waits) {
    bus::rib_link link("local:nobody", RIB_CLIENT_FSPF);
    registration named(link, RIB_CLIENT_FSPF, "name", {});
    const auto said = [&] { return testing::printed_by([&] { named.stay(); }); };
    EXPECT_NE(said(), "");
    EXPECT_EQ(said(), "") << "it is not time yet";
}

TEST_F(damaged_answers, that_are_refusals_say_why) {
    bus::rib_link link(url, RIB_CLIENT_FSPF);
    rib.answer_with(response_of(RIB_NO_ENTRY));
    EXPECT_EQ(read_verification(link, RIB_CLIENT_FSPF, 0x100), std::nullopt);
    rib.answer_with(response_of(RIB_NOT_SUPPORTED));
    EXPECT_THROW(read_verification(link, RIB_CLIENT_FSPF, 0x100), refused_question);
}

TEST_F(damaged_answers, about_a_log_that_goes_on_too_fast_are_left) {
    bus::rib_link link(url, RIB_CLIENT_FSPF);
    rib.answer_with(words({7, 0}));
    EXPECT_EQ(read_log(link, RIB_CLIENT_FSPF, unicast_log), bytes()) << "it holds nothing";
    rib.answer_with(words({7, 3}));
    EXPECT_THROW(read_log(link, RIB_CLIENT_FSPF, unicast_log), bus::no_answer);
}

TEST_F(damaged_answers, that_never_end_are_not_waited_for) {
    constexpr size_t domain_at = 981; // of the first route's FC ID
    rib.answer_with(routes());
    rib.count_on_at(domain_at);
    bus::rib_link link(url, RIB_CLIENT_FSPF);
    size_t taken = 0;
    const auto read = [&] {
        read_table<unicast_table>(link, {.uuid = RIB_CLIENT_FSPF, .most_routes = 100}, [&](auto &&...) { taken++; });
    };
    EXPECT_THROW(read(), bus::no_answer);
    EXPECT_EQ(taken, 100U);
}

TEST_F(damaged_answers, lists_of_versions_without_end_are_left) {
    rib.answer_with(protocol::topology_versions(RIB_CLIENT_FSPF, 0, {}));
    rib.count_on_at(7); // the VSAN
    bus::rib_link link(url, RIB_CLIENT_FSPF);
    EXPECT_THROW(read_versions(link, {.uuid = RIB_CLIENT_FSPF, .most_lists = 100}), bus::no_answer);
}

TEST_F(damaged_answers, lists_of_versions_end_with_the_last_client_and_go_forward) {
    bus::rib_link link(url, RIB_CLIENT_FSPF);
    const auto lists = [&](std::optional<uint32_t> vsan) {
        return read_versions(link, {.uuid = RIB_CLIENT_FSPF, .vsan = vsan}).size();
    };
    rib.answer_with(protocol::topology_versions(RIBKIT_LAST_CLIENT, RIB_LAST_VSAN, {}));
    EXPECT_EQ(lists({}), 1U);
    EXPECT_EQ(lists(RIB_LAST_VSAN), 1U);
    EXPECT_EQ(lists(5), 0U);
    expect_dropped(protocol::topology_versions(0, 5, {}), [&] { lists({}); });
}

TEST_F(damaged_answers, a_start_with_a_payload_is_dropped) {
    bus::rib_link link(url, RIB_CLIENT_FSPF);
    yelk_hist_clear();
    rib.notify(RIBKIT_OPCODE_STARTED, {0});
    EXPECT_FALSE(link.heard_of_start());
    EXPECT_EQ(lines_about("client: notification of 1 bytes"), 1U);
    rib.notify(RIBKIT_OPCODE_STARTED, {});
    EXPECT_TRUE(link.heard_of_start());
    EXPECT_EQ(lines_about("client:"), 1U);
}

} // namespace
} // namespace ribkit::clients
