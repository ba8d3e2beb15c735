// Memory that fails while a RIB and its modules work: whichever allocation it is, whoever made it, a request is
// answered all the same or asked again, and as soon as there is memory the modules are brought to what the RIB has.
#include "bus/service_handle.h"
#include "fib/service/fib_service.h"
#include "lab/modules.h"
#include "protocol/route_messages.h"
#include "rib/service/rib_service.h"
#include "rib_codes.h"
#include "ribkit_rib.h"
#include "testing/alloc_failure.h"
#include "testing/capture.h"
#include "testing/fault_script.h"
#include "testing/literal_updates.h"

#include <cerrno>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <system_error>

namespace ribkit::rib {
namespace {

constexpr const char *url = "local:modules_memory_test";
constexpr uint32_t routes = 12;

/// An update of so many routes, with the same cost.
bytes update_of(uint32_t oper, uint32_t cost, uint32_t action = RIB_ACTION_ADD, uint32_t every = 1) {
    std::vector<model::route_change> changes;
    for (uint32_t domain = 1; domain <= routes; domain += every) {
        changes.push_back(
            {action, {domain << 16, RIB_MASK_DOMAIN}, {cost, 0, {{0x01010001, domain}, {0x01010002, 1}}}});
    }
    return testing::literal_update({RIB_CLIENT_FSPF, 1, oper, changes});
}

const bytes added = update_of(RIB_OPER_UPDATE_RSP, 1);
const bytes changed = update_of(RIB_OPER_UPDATE_RSP, 2, RIB_ACTION_ADD, 2);
const bytes deleted = update_of(RIB_OPER_UPDATE_RSP, 2, RIB_ACTION_DELETE, 3);
const bytes merged = update_of(RIB_OPER_MERGE_RSP, 3, RIB_ACTION_ADD, 2);
const bytes suspended = testing::literal_update({RIB_CLIENT_VSAN_MANAGER, 1, RIB_OPER_SUSPEND, {}});
const bytes resumed = testing::literal_update({RIB_CLIENT_VSAN_MANAGER, 1, RIB_OPER_RESUME, {}});
const bytes last = update_of(RIB_OPER_UPDATE_RSP, 9);

class small_world {
  public:
    small_world() { start_module(0); }

    /// Nothing here but the service asks for memory.
    void work() {
        for (const bytes *one : {&added, &changed, &suspended, &deleted, &resumed, &merged}) {
            ask(*one);
        }
        start_module(1);
        ask(added);
        modules_[0].reset();
        start_module(0);
        ask(changed);
    }

    /// Everything is there again, with time and without help.
    void expect_recovery() {
        for (size_t i = 0; i < modules_.size(); i++) {
            if (!modules_.at(i)) {
                start_module(i);
            }
        }
        ask(resumed);
        const uint32_t result = ask(last); // a module may try again only in a second to be known
        EXPECT_TRUE(result == RIB_OK || result == RIB_MISSING_DEVICE || result == RIB_TIMEOUT) << result;
        constexpr int longest = 600;
        int waited = 0;
        while (!(rib_.has_settled() && have_all()) && waited < longest) {
            waited++;
            rest(100);
        }
        EXPECT_LT(waited, longest);
        rib_.stop();
        for (const auto &module : modules_) {
            module->read([&](const fib::module &of) {
                EXPECT_EQ(lab::difference_between(rib_.tables(), of.fib), lab::module_difference{});
            });
        }
    }

  private:
    /// @return the answer's result; RIB_SW_BUG where it is none. Asks again where none comes.
    uint32_t ask(const bytes &update) {
        constexpr int most_tries = 4;
        for (int tries = 0; tries < most_tries; tries++) {
            qip_ref ref{};
            if (qip_send(handle_.number(), &ribkit_rib_address, RIBKIT_OPCODE_FCURT_UPDATE, update.data(),
                         static_cast<uint32_t>(update.size()), &ref, nullptr, nullptr) != 0) {
                continue;
            }
            qip_recv_opts opts{{QIP_RECV_BY_TOKEN, 0, 20, qip_rr_token_get(&ref)}};
            qip_drop(handle_.number(), &ref);
            if (qip_recv(handle_.number(), &ref, &opts) == 0) {
                const bool is_whole = qip_payload_size(&ref) == wire::route_rsp.size;
                const uint32_t result =
                    is_whole ? testing::word_at({static_cast<const uint8_t *>(qip_payload_get(&ref)), 4}, 0)
                             : RIB_SW_BUG;
                qip_drop(handle_.number(), &ref);
                return result;
            }
        }
        return RIB_TIMEOUT;
    }

    void start_module(size_t index) {
        try {
            modules_.at(index) = std::make_unique<fib::fib_service>(
                url, fib::fib_options{.number = static_cast<uint32_t>(index + 1), .instance = ++starts_});
        } catch (const std::bad_alloc &) { // later
        } catch (const std::runtime_error &) {
        }
        rest(400);
    }

    void rest(uint32_t milliseconds) const {
        const qip_recv_opts nothing{{QIP_RECV_INCOMING, 0, 0, 0, milliseconds}};
        qip_ref ref{};
        qip_recv(handle_.number(), &ref, &nothing);
    }

    [[nodiscard]] bool have_all() const {
        return std::all_of(modules_.begin(), modules_.end(), [](const auto &one) {
            return one->read([](const fib::module &of) {
                const auto &all = of.fib.entries<fib::unicast>().all();
                return all.size() == routes && std::all_of(all.begin(), all.end(), [](const auto &entry) {
                           return fib::table<fib::unicast>::read(entry.second).metric == 9;
                       });
            });
        });
    }

    rib_service rib_{url, {.counts_at_end = true, .complaints_to = -1}};
    bus::service_handle handle_{url};
    std::array<std::unique_ptr<fib::fib_service>, 2> modules_;
    uint32_t starts_ = 0;
};

TEST(failing_memory, leaves_modules_that_are_brought_up_to_date_whichever_allocation_it_was) {
    const size_t stride = std::getenv("RIBKIT_ALL") != nullptr ? 1 : RIBKIT_EMULATED ? 35 : 7;
    size_t tried = 0;
    bool happened = true;
    for (size_t n = 1; happened && !::testing::Test::HasFailure(); n += stride) {
        const testing::fault_script script("clock virtual\n");
        small_world all;
        testing::printed_by([&] { // the wrappers say what failed
            const testing::failing_allocation failing(n);
            all.work();
            happened = failing.happened();
        });
        all.expect_recovery();
        tried++;
        EXPECT_FALSE(::testing::Test::HasFailure()) << "allocation " << n;
    }
    EXPECT_GT(tried, 300 / stride);
    EXPECT_EQ(qip_refs_held(), 0U);
}

} // namespace
} // namespace ribkit::rib
