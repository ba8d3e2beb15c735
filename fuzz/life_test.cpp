// Every message of the catalogue travels in the life of a switch: five clients follow a fabric, one of the modules is
// too small for it, somebody listens for changes, an operator looks at everything, and his own program asks for what no
// command does. Whatever anybody in this process sends or receives passes the taps below, which stand between the
// programs and the message service.
#include "bus/service_handle.h"
#include "catalogue/messages.h"
#include "cli/messages/displays.h"
#include "cli/rib/module_kinds.h"
#include "cli/rib/shown_kinds.h"
#include "clients/change_reader.h"
#include "fib/service/fib_service.h"
#include "fuzz/notebook.h"
#include "fuzz/quiet.h"
#include "lab/files/fabric_file.h"
#include "lab/modules.h"
#include "lab/route_role.h"
#include "protocol/fib/fib_requests.h"
#include "protocol/requests.h"
#include "rib/service/rib_service.h"
#include "rib_codes.h"

#include <gtest/gtest.h>
#include <map>
#include <mutex>
#include <thread>

namespace ribkit::fuzz {
namespace {

constexpr const char *url = "local:life";

/// What has passed. Answers are known by their tokens.
class tap {
  public:
    void sent(uint32_t handle, uint32_t opcode, const qip_ref &request) {
        const std::scoped_lock locked(lock_);
        asked_[{handle, qip_rr_token_get(&request)}] = opcode;
    }
    void received(uint32_t handle, const qip_ref &one) {
        const auto *bytes = static_cast<const uint8_t *>(qip_payload_get(&one));
        const std::span<const uint8_t> message(bytes, qip_payload_size(&one));
        const std::scoped_lock locked(lock_);
        const auto request = asked_.find({handle, qip_rr_token_get(&one)});
        if (qip_opcode_get(&one) != 0) {
            note_request(qip_opcode_get(&one), message);
        } else if (request != asked_.end()) {
            note_answer(request->second, message);
            asked_.erase(request);
        }
    }
    [[nodiscard]] const notebook &notes() const { return notes_; }

  private:
    void note_request(uint32_t opcode, std::span<const uint8_t> message) {
        if (const auto *row = protocol::find_fib_request(opcode)) {
            notes_.note_run(row->message, message);
        } else if (const auto *known = protocol::find_request(opcode)) {
            notes_.note(known->message, {message.begin(), message.end()});
        }
    }
    void note_answer(uint32_t opcode, std::span<const uint8_t> message) {
        const byte_vector answer(message.begin(), message.end());
        if (const auto *row = protocol::find_fib_request(opcode)) {
            notes_.note_run(run_of(answer, row->answer), message);
        } else if (const auto *known = protocol::find_request(opcode); known != nullptr && !is_refusal(answer)) {
            if (const codec::message *kind = kind_of(answer, known->answer)) {
                notes_.note(*kind, message.data());
            }
        }
    }

    std::mutex lock_;
    std::map<std::pair<uint32_t, uint32_t>, uint32_t> asked_; ///< opcodes, by handle and token
    notebook notes_;
};

tap &the_tap() {
    static tap one;
    return one;
}

/// A RIB with two modules, and five clients that follow a fabric.
class running_switch {
  public:
    running_switch()
        : fabric_(lab::read_fabric_file(RIBKIT_SOURCE_DIR "/examples/fabrics/small.toml")),
          rib_(url, {.spaces = fabric_.spaces(), .vsans = fabric_.vsan_records()}) {
        add_module(1, {});
        add_module(2, {.unicast = 3, .multicast = 1, .label = 0}); // it is full, and says for what it has no room
        const std::vector<std::string> all(lab::role_names.begin(), lab::role_names.end());
        clients_ = lab::make_roles(lab::roles_of(fabric_, all), fabric_, url, {});
    }

    void converge() {
        paths_.follow(fabric_, [](size_t, size_t) {});
        for (const auto &client : clients_) {
            client->compute(fabric_, paths_);
            client->converge();
        }
    }
    void let_events_happen() {
        converge();
        for (const lab::fabric_event &event : fabric_.events()) {
            fabric_.apply(event);
            converge();
        }
    }

  private:
    void add_module(uint32_t number, const fib::fib_sizes &sizes) {
        modules_.push_back(std::make_unique<fib::fib_service>(
            url, fib::fib_options{.number = number, .sizes = sizes, .ports = fib::usual_ports(number, 4)}));
        const auto is_known = [&] {
            return modules_.back()->read(
                [](const fib::module &of) { return of.fib.now() != model::fib_state::offline; });
        };
        EXPECT_TRUE(lab::wait_until(std::chrono::minutes(1), is_known));
    }

    lab::fabric fabric_;
    rib::rib_service rib_;
    std::vector<std::unique_ptr<fib::fib_service>> modules_;
    lab::fabric_routes paths_;
    lab::route_roles clients_;
};

/// Whoever listens for all changes until the end.
class listener {
  public:
    listener()
        : link_(url, RIB_CLIENT_OPERATOR),
          reader_(link_, RIB_CLIENT_OPERATOR, {[](auto &&...) {}, [](auto &&...) {}, [](auto &&...) {}}) {
        reader_.start();
        thread_ = std::thread([this] {
            try {
                reader_.follow();
            } catch (const bus::link_closed &) { // the end
            }
        });
    }
    listener(const listener &) = delete;
    listener &operator=(const listener &) = delete;
    ~listener() {
        link_.close();
        thread_.join();
    }

  private:
    bus::rib_link link_;
    clients::change_reader reader_;
    std::thread thread_;
};

/// An operator, who looks at every display, of the RIB and of the modules.
void look_at_everything() {
    bus::rib_link rib(url, RIB_CLIENT_OPERATOR);
    bus::module_link module(url, 1, std::chrono::minutes(1));
    for (const cli::shown_kind &kind : cli::shown_kinds()) {
        kind.read(rib, {});
    }
    for (const cli::display &kind : cli::displays()) {
        if (const cli::module_kind *of_module = cli::find_module_kind(kind.short_name())) {
            of_module->read(module, {});
        }
    }
}

/// A program of the operator's own asks for what no command asks for: entries as tables show them, comparisons, the way
/// of a flow, logs from any number on, which frames change their VSAN.
void ask_for_the_rest() {
    constexpr uint32_t of_the_rib[] = {RIBKIT_OPCODE_FCURT_QUERY,  RIBKIT_OPCODE_FCMRT_QUERY, RIBKIT_OPCODE_FCLRT_QUERY,
                                       RIBKIT_OPCODE_VERIFY,       RIBKIT_OPCODE_VERF_QUERY,  RIBKIT_OPCODE_TEST_QUERY,
                                       RIBKIT_OPCODE_FCU_LB_QUERY, RIBKIT_OPCODE_SYNC_QUERY};
    requester rib(url);
    for (const auto &[opcode, bytes] : sound_requests()) {
        if (std::find(std::begin(of_the_rib), std::end(of_the_rib), opcode) != std::end(of_the_rib)) {
            const byte_vector answer = rib.ask(opcode, bytes);
            // A comparison finds that the full module lacks something.
            const uint32_t found = opcode == RIBKIT_OPCODE_VERIFY ? RIB_FAILED : RIB_OK;
            EXPECT_EQ(is_refusal(answer) ? codec::view<wire::route_rsp>(answer.data()).get<"word_0">() : RIB_OK, found);
        }
    }
    module_requester module(url, 1);
    for (const auto &[opcode, bytes] : sound_fib_requests()) {
        if (opcode == RIBKIT_OPCODE_FIB_REWRITE_UPDATE || opcode == RIBKIT_OPCODE_FIB_LB_QUERY) {
            EXPECT_FALSE(module.ask(opcode, bytes).empty());
        }
    }
}

TEST(life, every_message_of_the_catalogue_travels) {
    const quiet silence{stderr};
    {
        running_switch all;
        const listener hears;
        all.let_events_happen();
        look_at_everything();
        ask_for_the_rest();
    }
    for (const codec::message &kind : codec::messages()) {
        EXPECT_TRUE(the_tap().notes().names().contains(kind.name)) << kind.name << " has not travelled";
    }
}

} // namespace
} // namespace ribkit::fuzz

// What the programs call in place of the message service: the linker has it so.
extern "C" {
int __real_qip_send(uint32_t, const qip_addr *, uint32_t, const void *, uint32_t, qip_ref *, const qip_ref *,
                    const qip_send_opts *);
int __real_qip_recv(uint32_t, qip_ref *, const qip_recv_opts *);

int __wrap_qip_send(uint32_t handle, const qip_addr *to, uint32_t opcode, const void *payload, uint32_t size,
                    qip_ref *sent, const qip_ref *request, const qip_send_opts *opts) {
    const int result = __real_qip_send(handle, to, opcode, payload, size, sent, request, opts);
    if (result == 0 && sent != nullptr && request == nullptr) {
        ribkit::fuzz::the_tap().sent(handle, opcode, *sent);
    }
    return result;
}

int __wrap_qip_recv(uint32_t handle, qip_ref *received, const qip_recv_opts *opts) {
    const int result = __real_qip_recv(handle, received, opts);
    if (result == 0) {
        ribkit::fuzz::the_tap().received(handle, *received);
    }
    return result;
}
}
