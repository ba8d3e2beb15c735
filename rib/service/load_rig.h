// What benchmarks load a RIB with: a whole switch's routes, and a client that sends them without waiting for each
// answer.
#pragma once

#include "bus/service_handle.h"
#include "lab/fabric_routes.h"
#include "lab/files/fabric_file.h"
#include "lab/generator/fabric_generator.h"
#include "protocol/route_messages.h"
#include "protocol/uses.h"
#include "rib/service/rib_service.h"
#include "rib_codes.h"
#include "rib_wrap.h"
#include "ribkit_rib.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace ribkit::rib {

inline constexpr uint32_t switches = 239;
inline constexpr uint32_t most_unanswered = 8;

[[noreturn]] inline void give_up(const char *why) {
    std::fprintf(stderr, "bench: %s\n", why);
    std::exit(1);
}

/// What the local switch of a generated fabric wants its RIB to have.
struct load {
    explicit load(uint32_t vsans)
        : spaces(rib::rib_spaces::for_vsans(vsans)),
          from(lab::parse_fabric(lab::generate_fabric({.switches = switches, .vsans = vsans}), "bench")) {
        paths.follow(from, [](size_t, size_t) {});
        for (const auto &[vsan, routes] : paths.all()) {
            changes.emplace_back(vsan, model::changes_between({}, *routes));
        }
    }
    [[nodiscard]] double routes() const { return static_cast<double>(paths.size()); }

    rib::rib_spaces spaces;
    lab::fabric from;
    lab::fabric_routes paths;
    std::vector<std::pair<uint32_t, std::vector<model::route_change>>> changes; ///< by VSAN
};

/// The update with all routes of a VSAN.
inline std::span<uint8_t> written(std::vector<uint8_t> &room, uint32_t vsan,
                                  const std::vector<model::route_change> &changes) {
    const protocol::update_writer update(room);
    update.set<"uuid">(RIB_CLIENT_FSPF).set<"vsan">(vsan).set<"oper">(RIB_OPER_UPDATE_RSP);
    if (protocol::add_routes(update, changes) != changes.size()) {
        give_up("the routes of a VSAN are more than a message");
    }
    return std::span(room).first(update.size());
}

inline std::vector<uint8_t> room_of_message() { return std::vector<uint8_t>(size_t{64} * 1024); }

/// Sends updates without waiting for each answer, and keeps nothing of them.
class pipelined_client {
  public:
    /// @param most updates that may be unanswered
    explicit pipelined_client(const std::string &url, uint32_t most = most_unanswered) : handle_(url) {
        if (rib_token_alloc(&open_, most) != RIB_OK) {
            give_up("no memory for tokens");
        }
    }
    pipelined_client(const pipelined_client &) = delete;
    pipelined_client &operator=(const pipelined_client &) = delete;
    ~pipelined_client() { rib_token_release(&open_); }

    void bring(const load &wanted) {
        for (const auto &[vsan, changes] : wanted.changes) {
            if (open_.count == open_.capacity) {
                take_answer();
            }
            send(written(room_, vsan, changes));
        }
        while (open_.count != 0) {
            take_answer();
        }
    }

    /// One update, to its answer.
    void bring_one(uint32_t vsan, const std::vector<model::route_change> &changes) {
        send(written(room_, vsan, changes));
        take_answer();
    }

  private:
    void send(std::span<uint8_t> message) {
        rib_wrap_msg asked{};
        asked.uuid = RIB_CLIENT_FSPF;
        asked.opcode = RIBKIT_OPCODE_FCURT_UPDATE;
        asked.payload = message.data();
        asked.payload_size = static_cast<uint32_t>(message.size());
        qip_ref sent{};
        if (rib_wrap_qip_send_non_blk(handle_.number(), &sent, &asked) != RIB_OK ||
            rib_token_add(&open_, qip_rr_token_get(&sent)) != RIB_OK) {
            give_up("an update could not be sent");
        }
        rib_wrap_qip_drop(RIB_CLIENT_FSPF, handle_.number(), &sent);
    }

    void take_answer() {
        constexpr uint32_t longest = 20; // seconds
        const qip_recv_opts any{{QIP_RECV_ANY_ANSWER, 0, longest}};
        qip_ref answer{};
        if (qip_recv(handle_.number(), &answer, &any) != 0 ||
            rib_token_remove(&open_, qip_rr_token_get(&answer)) != RIB_OK) {
            give_up("an answer is missing");
        }
        const codec::view<wire::route_rsp> said(static_cast<const uint8_t *>(qip_payload_get(&answer)));
        if (said.get<protocol::use<wire::route_rsp, "result">>() != RIB_OK) {
            give_up("an update was refused");
        }
        rib_wrap_qip_drop(RIB_CLIENT_FSPF, handle_.number(), &answer);
    }

    bus::service_handle handle_;
    rib_token open_{};
    std::vector<uint8_t> room_ = room_of_message();
};

/// A RIB on a bus of its own.
struct running_rib {
    explicit running_rib(const load &of) : service(url, {.spaces = of.spaces}) {}

    std::string url = "local:rib-bench";
    rib::rib_service service;
};

} // namespace ribkit::rib
