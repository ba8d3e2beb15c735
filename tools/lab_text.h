// What the lab prints beside the traces and displays: where it runs, what happens, what it came to.
#pragma once

#include "tools/lab.h"

#include <string>

namespace ribkit {

/// "small: 5 switches, 7 links; routes of edge-1 (domain 1) in VSAN 1 (production), 20 (backup)"
std::string head_text(const fabric &f, const std::string &path);

/// "edge-1 fc1/1 - core-1 fc1/1 goes down"
std::string event_text(const fabric &f, const fabric_event &event);

/// "4 routes added, 3 changed, in 2 messages"
std::string traffic_text(const client_traffic &traffic);

/// The figures of a whole run, in lines; the last one has no newline.
std::string summary_text(const lab_run &run);

} // namespace ribkit
