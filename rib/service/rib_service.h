// The RIB as a listener on the message bus, on a thread of its own.
#pragma once

#include "bus/complaints.h"
#include "bus/service_handle.h"
#include "bus/service_thread.h"
#include "rib/modules/start_hold.h"
#include "rib/service/modules/held_answers.h"
#include "rib/service/modules/module_exchange.h"
#include "rib/service/notices.h"
#include "rib/service/requests.h"
#include "rib/service/rib_claim.h"
#include "rib/service/rib_policy.h"
#include "rib/service/route_watch.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <unistd.h>
#include <vector>

namespace ribkit::rib {

struct rib_options {
    rib_spaces spaces{};
    bool trace = false;                    ///< print a line for every route that moves in the hardware
    std::chrono::milliseconds patience{0}; ///< how long a server of the bus is waited for
    bool memory = false;                   ///< print the segments of the hardware whenever they change
    rib_policy policy{};
    std::function<void()> gave_way{};  ///< called, on the RIB's thread, when an earlier RIB was found later on
    bool counts_at_end = false;        ///< complaints are counted until the end, so that runs print the same
    int complaints_to = STDERR_FILENO; ///< a descriptor
    described_vsans vsans{};           ///< that are known though they may have no routes
    std::chrono::milliseconds hold{0}; ///< at the start, modules keep what they have so long at most
};

class rib_service {
  public:
    /// Listens at the RIB's address of this bus, and notifies its clients. Throws as service_handle does,
    /// std::bad_alloc, and std::runtime_error where it cannot listen or another RIB is there.
    explicit rib_service(const std::string &url, const rib_options &options = {});
    rib_service(const rib_service &) = delete;
    rib_service &operator=(const rib_service &) = delete;
    ~rib_service() { stop(); }

    /// Answers no more.
    void stop();

    /// For reading once the service has stopped.
    [[nodiscard]] const state &tables() const { return rib_.routes; }
    [[nodiscard]] size_t answered() const { return answered_; }

    /// Whether the modules have been told, and have answered, as far as they are there, all that was changed by what
    /// has been answered.
    [[nodiscard]] bool has_settled() const { return settled_; }

    /// Whether another RIB was there first.
    [[nodiscard]] bool has_given_way() const { return given_way_; }

  private:
    struct request {
        const qip_ref &ref;
        uint32_t opcode;
        std::span<const uint8_t> payload;
        bool in_envelope = false;
    };
    struct request_row {
        uint32_t opcode;
        bytes (rib_service::*handler)(const request &asked);
    };
    static const request_row own_requests[];

    void describe(const described_vsans &vsans);
    void listen(const std::string &url);
    void serve();
    bool take_one();
    [[nodiscard]] qip_recv_opts next_wait() const;
    void keep_house();
    void lose_clients();
    bool send_notice(uint32_t opcode, std::span<const uint8_t> message) const;
    void rest_after(int error);
    void take_and_drop(qip_ref &ref);
    void take(const qip_ref &ref);
    void answer(const qip_ref &ref, bool in_envelope, std::span<const uint8_t> payload);
    bytes respond_in_envelope(const qip_ref &ref);
    bytes respond(const request &asked);
    template <class Kind> bytes update(const request &asked);
    bytes ask(const request &asked);
    template <class Kind> protocol::fcurt_response take_routes(const request &asked);
    bytes hear_probe(const request &asked);
    bytes tell_formats(const request &asked);
    [[nodiscard]] static arrival arrival_of(const request &asked);
    [[nodiscard]] static uint32_t seconds_now();
    bytes refuse(const request &asked, uint32_t result, const std::string &why, uint32_t client = 0);
    void complain(const qip_ref &ref, uint32_t opcode, uint32_t result, const std::string &why, uint32_t client = 0);
    [[nodiscard]] bool may_speak(const request &asked, uint32_t client) const;

    template <class Kind> bytes update_and_wait(const request &asked);
    bytes compare_and_wait(const request &asked, table_id table);
    template <class Take>
    bytes hold_for_modules(const request &asked, const update_answer &failed, std::optional<table_id> compares,
                           Take take);
    bytes hear_module(const request &asked);
    bool hear_module_answer(const qip_ref &ref);
    void look_after_modules();
    [[nodiscard]] bool have_modules_all() const;
    void answer_held();
    void report(table_id table, waiting::findings found);
    void drop_held();

    bool stand_by();
    void send_claim();
    bytes hear_claim(const request &asked);
    [[nodiscard]] bool is_answer_to_claim(const qip_ref &ref) const;
    void hear_answer(const qip_ref &ref);
    void step(claim_step next);
    [[nodiscard]] rib_claim claim_now() const;

    bus::service_handle handle_;
    rib_policy policy_;
    bool binds_names_; ///< the bus says who sends
    std::function<void()> gave_way_;
    notices notices_;
    modules followed_{rib_.routes};
    route_watch watch_;
    instance rib_;
    module_exchange exchange_;
    held_answers held_;
    start_hold hold_;
    bool holds_ = true;          ///< modules that have entries keep them, until hold_ says otherwise
    bool keeps_request_ = false; ///< that which is taken now: it is answered later
    uint64_t looked_ = 0;        ///< for clients that were not heard of, in seconds
    bus::complaints complaints_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    rib_claim claim_ = rib_claim::made_now();
    uint32_t claims_left_ = 16;         ///< to send; whoever can send to the RIB can make it ask again
    std::vector<uint32_t> claims_open_; ///< tokens of those sent and not answered
    uint32_t failures_ = 0;             ///< of receiving, one after the other
    size_t answered_ = 0;
    std::mutex lock_;
    std::condition_variable stopping_;
    bool stopped_ = false;
    std::atomic<bool> given_way_{false};
    std::atomic<bool> settled_{true};
    bus::service_thread thread_;
};

} // namespace ribkit::rib
