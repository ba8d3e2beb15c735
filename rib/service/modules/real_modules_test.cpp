// RIB and modules as they are, in one process: random requests of a client, modules that start anew and upgrade,
// messages that are lost, late, twice and overtaken. In the end each module has just the active routes.
#include "base/text.h"
#include "bus/rib_link.h"
#include "fib/service/fib_service.h"
#include "protocol/queries.h"
#include "protocol/route_messages.h"
#include "protocol/table_messages.h"
#include "rib/naive/random_requests.h"
#include "rib/service/rib_service.h"
#include "rib_check.h"
#include "rib_codes.h"
#include "ribkit_rib.h"
#include "testing/capture.h"
#include "testing/fault_script.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <optional>
#include <thread>

namespace ribkit::rib {
namespace {

constexpr const char *url = "local:real_modules_test";
constexpr uint32_t modules_there = 2;

/// Cost by VSAN and domain, of the routes that everybody shall have.
using costs = std::map<std::pair<uint32_t, uint32_t>, uint32_t>;
constexpr uint32_t vsans = 3;
constexpr uint32_t domains = 30;

costs held_by(const fib::module &module) {
    costs all;
    for (const auto &[where, what] : module.fib.entries<fib::unicast>().all()) {
        all[{where.vsan, where.to.fcid >> 16}] = fib::table<fib::unicast>::read(what).metric;
    }
    return all;
}

/// A client that sends updates, and waits for each answer.
class busy_client {
  public:
    explicit busy_client(uint32_t seed) : asking_(seed) {}

    void ask_something() {
        constexpr uint32_t opers[] = {RIB_OPER_UPDATE, RIB_OPER_UPDATE_RSP, RIB_OPER_UPDATE_RSP};
        begin(1 + asking_.below(vsans), asking_.one_of(opers));
        for (uint32_t more = 1 + asking_.below(6); more > 0; more--) {
            add(1 + asking_.below(domains), asking_.once_in(3) ? 0 : 1 + asking_.below(100));
        }
        send();
    }

    /// Every route is there, with a cost, or is not. @return whether the RIB has answered
    bool settle(uint32_t vsan, const costs &wanted) {
        begin(vsan, RIB_OPER_UPDATE);
        for (uint32_t domain = 1; domain <= domains; domain++) {
            const auto found = wanted.find({vsan, domain});
            add(domain, found == wanted.end() ? 0 : found->second);
        }
        return send();
    }

    /// Lets time pass.
    void rest() {
        const qip_recv_opts nothing{{QIP_RECV_INCOMING, 0, 0, 0, 100}};
        qip_ref ref{};
        EXPECT_NE(qip_recv(handle_.number(), &ref, &nothing), 0);
    }

    size_t answered = 0;

  private:
    void begin(uint32_t vsan, uint32_t oper) {
        update_.emplace(room_);
        update_->set<"uuid">(RIB_CLIENT_FSPF).set<"vsan">(vsan).set<"oper">(oper);
    }

    /// @param cost 0: there is no route
    void add(uint32_t domain, uint32_t cost) {
        const model::next_hop hop{0x01010001, domain};
        protocol::add_route(*update_, cost == 0 ? RIB_ACTION_DELETE : RIB_ACTION_ADD, {domain << 16, RIB_MASK_DOMAIN},
                            model::route_values{cost, 0, {&hop, 1}});
    }

    bool send() {
        rib_wrap_msg request{};
        rib_wrap_msg answer{};
        request.opcode = RIBKIT_OPCODE_FCURT_UPDATE;
        request.payload = room_.data();
        request.payload_size = update_->size();
        bool is_whole = false;
        testing::printed_by([&] { // the wrapper says what failed
            is_whole = rib_wrap_qip_req_rsp(handle_.number(), &request, &answer) == RIB_OK;
        });
        if (is_whole) {
            answered++;
            EXPECT_EQ(rib_check_fcurt_rsp(answer.payload, answer.payload_size, nullptr), RIB_OK);
            rib_wrap_qip_drop(RIB_CLIENT_TEST, handle_.number(), &answer.ref);
        }
        return is_whole;
    }

    asker asking_;
    bus::service_handle handle_{url};
    bytes room_ = bytes(4096);
    std::optional<protocol::update_writer> update_;
};

/// A RIB and its modules.
class small_switch {
  public:
    small_switch() {
        start(1);
        start(2);
    }

    void start(uint32_t number) {
        modules_[number - 1].reset();
        modules_[number - 1] =
            std::make_unique<fib::fib_service>(url, fib::fib_options{.number = number, .instance = ++starts_});
    }

    void trouble(asker &chance) {
        if (chance.once_in(40)) {
            start(1 + chance.below(modules_there));
        } else if (chance.once_in(40)) {
            modules_[chance.below(modules_there)]->set_upgrading(chance.once_in(2));
        }
    }

    void end_trouble() {
        for (const auto &one : modules_) {
            one->set_upgrading(false);
        }
    }

    /// Asks for the routes, and waits some seconds for them to be everywhere.
    bool has_come_to(const costs &wanted, busy_client &client) const {
        constexpr int most_rests = 200;
        for (uint32_t vsan = 1; vsan <= vsans; vsan++) {
            client.settle(vsan, wanted);
        }
        for (int rests = 0; rests < most_rests; rests++) {
            if (all_have(wanted)) {
                return true;
            }
            client.rest();
        }
        return false;
    }

  private:
    [[nodiscard]] bool all_have(const costs &wanted) const {
        return std::all_of(modules_.begin(), modules_.end(), [&](const auto &one) {
            return one->read([&](const fib::module &of) { return held_by(of) == wanted; });
        });
    }

    rib_service rib_{url, {.counts_at_end = true, .complaints_to = -1}};
    std::vector<std::unique_ptr<fib::fib_service>> modules_{modules_there};
    uint32_t starts_ = 0;
};

constexpr const char *rough = R"(
clock virtual
drop one-in 80
duplicate one-in 50
reorder one-in 70
delay one-in 40 300
fail send one-in 90 ENOBUFS
fail send one-in 90 ENOMEM
)";

TEST(real_modules, have_the_active_routes_in_the_end_whatever_has_happened) {
    constexpr uint32_t seeds = RIBKIT_EMULATED ? 2 : 8;
    for (uint32_t seed = 1; seed <= seeds && !::testing::Test::HasFailure(); seed++) {
        const testing::fault_script script(base::joined("seed ", seed, rough));
        small_switch all;
        asker chance(seed);
        busy_client client(seed);
        for (int i = 0; i < 300; i++) {
            client.ask_something();
            all.trouble(chance);
        }
        EXPECT_GT(client.answered, 200U);
        all.end_trouble();
        costs wanted;
        for (uint32_t vsan = 1; vsan <= vsans; vsan++) {
            for (uint32_t domain = 1; domain <= domains; domain += 1 + chance.below(2)) {
                wanted[{vsan, domain}] = 1 + chance.below(1000);
            }
        }
        constexpr int most_rounds = 100; // messages go astray all the time
        int round = 0;
        while (!all.has_come_to(wanted, client) && round < most_rounds) {
            round++;
        }
        EXPECT_LT(round, most_rounds) << "seed " << seed;
    }
    EXPECT_EQ(qip_refs_held(), 0U);
}

/// A RIB with one module, and a client that waits for its answers.
class one_module : public ::testing::Test {
  protected:
    one_module() { start_module(); }
    ~one_module() override { rib_.stop(); }

    /// Without what the last one had.
    void start_module() {
        module_.reset();
        module_.emplace(url, fib::fib_options{.number = 1});
        while (!rib_.has_settled() || state() != model::fib_state::active) {
            std::this_thread::yield();
        }
    }
    protocol::fcurt_response ask(uint32_t opcode, bytes message) {
        const bytes said = link_.ask(opcode, message);
        return protocol::decode_fcurt_response(std::span<const uint8_t, wire::route_rsp.size>(said));
    }
    template <const codec::layout &Update, class Add>
    protocol::fcurt_response ask(uint32_t opcode, uint32_t oper, const Add &add) {
        bytes room(10'000);
        const codec::writer<Update> update(room);
        update.template set<"uuid">(RIB_CLIENT_TEST).template set<"vsan">(1).template set<"oper">(oper);
        add(update);
        room.resize(update.size());
        return ask(opcode, room);
    }
    protocol::fcurt_response verify(uint32_t opcode) {
        const auto nothing = [](const auto & /*to*/) {};
        return opcode == RIBKIT_OPCODE_FCLRT_UPDATE ? ask<wire::fclrt_update>(opcode, RIB_OPER_VERIFY, nothing)
                                                    : ask<wire::fcmrt_update>(opcode, RIB_OPER_VERIFY, nothing);
    }
    /// What the last comparison of the label table has found.
    std::map<uint32_t, uint32_t> differing_labels() {
        auto query = protocol::encode(protocol::verify_query{RIB_CLIENT_TEST, 1, protocol::compared_labels, 9});
        const bytes said = link_.ask(RIBKIT_OPCODE_VERF_QUERY, query);
        std::map<uint32_t, uint32_t> found;
        for (size_t at = wire::verf_info.size; at < said.size(); at += wire::verf_fcl.size) {
            const codec::view<wire::verf_fcl> key(said.data() + at);
            found[key.get<"label_0">()] = key.get<"status">();
        }
        return found;
    }

    template <class Kind> size_t entries() {
        return module_->read([](const fib::module &of) { return of.fib.entries<Kind>().count(); });
    }
    model::fib_state state() {
        return module_->read([](const fib::module &of) { return of.fib.now(); });
    }

  private:
    rib_service rib_{url};
    std::optional<fib::fib_service> module_;
    bus::rib_link link_{url, RIB_CLIENT_TEST};
};

constexpr uint32_t few[] = {0x20000, 0x01010001, 1, 2};            // labels that are pushed
constexpr uint32_t too_many[] = {0x40000, 0x01010001, 1, 2, 3, 4}; // for a path

model::label_key matching(uint32_t label_word) {
    return {.vsan = 1, .type = RIB_ROUTE_LABEL, .match_count = 1, .match = {label_word}};
}

TEST_F(one_module, is_told_nothing_that_no_path_can_say_and_all_the_rest) {
    const auto said = ask<wire::fclrt_update>(RIBKIT_OPCODE_FCLRT_UPDATE, RIB_OPER_UPDATE_RSP, [](const auto &to) {
        for (const auto &[label_word, hops] :
             {std::pair(16U, std::span<const uint32_t>(few)), {17U, too_many}, {18U, few}}) {
            protocol::add_route(to, RIB_ACTION_ADD, matching(label_word), {{}, hops});
        }
    });
    EXPECT_EQ(said, (protocol::fcurt_response{RIB_HW_FULL, RIB_OPER_UPDATE_RSP, 1, 2, 3}));
    EXPECT_EQ(entries<fib::label>(), 2U);
    const auto found = verify(RIBKIT_OPCODE_FCLRT_UPDATE);
    EXPECT_EQ(found.result, RIB_FAILED);
    EXPECT_EQ(differing_labels(), (std::map<uint32_t, uint32_t>{{17, FIB_VERF_NOT_IN_FIB}}));
    start_module();
    EXPECT_EQ(entries<fib::label>(), 2U) << "a merge goes on behind it";
    EXPECT_EQ(verify(RIBKIT_OPCODE_FCMRT_UPDATE).result, RIB_OK) << "there is nothing";
}

TEST_F(one_module, is_compared_table_by_table) {
    constexpr model::multicast_key group{1, {0xff0001, 0xffffff}};
    constexpr uint32_t members[] = {0x01010001};
    const auto add_group = [&](const auto &to) { protocol::add_route(to, RIB_ACTION_ADD, group.to, {members}); };
    EXPECT_EQ(ask<wire::fcmrt_update>(RIBKIT_OPCODE_FCMRT_UPDATE, RIB_OPER_UPDATE_RSP, add_group).result, RIB_OK);
    for (const auto &[table, held] : {std::pair(protocol::compared_labels, 0U),
                                      {protocol::compared_multicast, 1U},
                                      {protocol::compared_unicast, 0U}}) {
        const auto whole = protocol::encode_verify({RIB_CLIENT_TEST, table});
        EXPECT_EQ(ask(RIBKIT_OPCODE_VERIFY, {whole.begin(), whole.end()}),
                  (protocol::fcurt_response{RIB_OK, RIB_OPER_VERIFY, 0, held, held}));
    }
}

TEST_F(one_module, has_no_unicast_route_that_would_push_more_labels_than_a_path_can) {
    constexpr model::destination two{0x020000, RIB_MASK_DOMAIN}, three{0x030000, RIB_MASK_DOMAIN};
    const auto push = [&](std::span<const uint32_t> labels) {
        return ask<wire::fclrt_update>(RIBKIT_OPCODE_FCLRT_UPDATE, RIB_OPER_UPDATE_RSP, [&](const auto &to) {
            protocol::add_route(to, RIB_ACTION_ADD, {.vsan = 1, .type = RIB_ROUTE_FC_LABEL, .to = two}, {{}, labels});
        });
    };
    EXPECT_EQ(push(too_many).result, RIB_OK) << "it is no entry of its own";
    const auto said = ask<wire::fcurt_update>(RIBKIT_OPCODE_FCURT_UPDATE, RIB_OPER_UPDATE_RSP, [&](const auto &to) {
        const model::route what{500, 0, {{0x01010001, 2}}};
        protocol::add_route(to, RIB_ACTION_ADD, two, what);
        protocol::add_route(to, RIB_ACTION_ADD, three, what);
    });
    EXPECT_EQ(said, (protocol::fcurt_response{RIB_HW_FULL, RIB_OPER_UPDATE_RSP, 1, 1, 2}));
    EXPECT_EQ(entries<fib::unicast>(), 1U);
    EXPECT_EQ(push(few).result, RIB_OK);
    EXPECT_EQ(entries<fib::unicast>(), 2U) << "a path can say it now";
}

} // namespace
} // namespace ribkit::rib
