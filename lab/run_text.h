// What a run prints beside the traces and displays: where it runs, what happens, what it came to.
#pragma once

#include "lab/fabric_run.h"
#include "rib/service/rib_state.h"

#include <string>
#include <vector>

namespace ribkit::lab {

/// "small: 5 switches, 7 links; routes of edge-1 (domain 1) in VSAN 1 (production), 20 (backup)"
std::string head_text(const fabric &f);

/// "edge-1 fc1/1 - core-1 fc1/1 goes down"
std::string event_text(const fabric &f, const fabric_event &event);

/// "module 1 (left)"
std::string module_title(const fabric_module &module);

/// "module 1 (left) has 19 entries"
std::string module_text(const fabric_module &about, const module_now &is);

/// "4 routes added, 3 changed, in 2 messages"
std::string traffic_text(const clients::client_traffic &traffic);

/// Domains that have become unreachable, a line each, or where there are many, how many; "" without any. The last line
/// has no newline.
std::string unreachable_text(const fabric &f, const std::vector<unreachable_domains> &lost);

/// The figures of a whole run, in lines; the last one has no newline.
/// @param rib null where the RIB is elsewhere
std::string summary_text(const run_record &run, const rib::rib_state *rib);

/// The figures of a RIB at its end, likewise.
std::string summary_text(const rib::rib_state &rib);

} // namespace ribkit::lab
