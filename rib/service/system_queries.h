// Requests about the RIB itself and the switch: registrations, VSANs, domains, modules, memory, logs, comparisons.
#pragma once

#include "protocol/queries.h"
#include "rib/instance.h"
#include "rib/modules/waiting.h"
#include "rib/service/reply.h"

#include <cstdint>

namespace ribkit::rib {

/// When and how a request has come.
struct arrival {
    uint32_t now = 0;         ///< seconds since 1970
    uint64_t heard = 0;       ///< seconds that pass evenly
    bool in_envelope = false; ///< of the CMI
};

// All of them throw std::bad_alloc.
reply answer_databases(const instance &rib, const protocol::list_query &asked, const arrival &came);
reply answer_domains(const instance &rib, const protocol::list_query &asked, const arrival &came);
reply answer_vsans(const instance &rib, const protocol::list_query &asked, const arrival &came);
reply answer_modules(const instance &rib, const protocol::list_query &asked, const arrival &came);
reply answer_registrations(const instance &rib, const protocol::list_query &asked, const arrival &came);
reply answer_internals(const instance &rib, const protocol::internal_query &asked, const arrival &came);
reply answer_node(const instance &rib, const protocol::node_query &asked);
reply answer_flow(const instance &rib, const protocol::flow_query &asked);
reply answer_log(const instance &rib, const protocol::log_query &asked);
reply answer_verification(const instance &rib, const protocol::verify_query &asked, const arrival &came);

/// A table is compared with the modules from now on, which a report tells...
void begin_report(instance &rib, table_id table, uint32_t now);
/// ... and so much was found. Throws std::bad_alloc.
void finish_report(instance &rib, table_id table, waiting::findings found, uint32_t now);

/// What changes something: the answer is its result.
reply test(instance &rib, const protocol::simple_request &asked);
reply verify(instance &rib, const protocol::simple_request &asked);
reply enter(instance &rib, const registration &said, const arrival &came);

} // namespace ribkit::rib
