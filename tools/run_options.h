// What is said on the command line about a client that follows a fabric.
#pragma once

#include "tools/bus_options.h"
#include "tools/fspf_client.h"
#include "tools/progress.h"

#include <cstddef>
#include <string>

namespace ribkit {

struct run_options {
    bus_options bus;
    std::string fabric_file; ///< "-" is standard input
    std::string json_file;   ///< as json_output
    size_t message_limit = client_options{}.message_limit;
    bool trace = false;
    bool envelopes = false;
    bool real_time = false; ///< wait until an event is due

    [[nodiscard]] client_options client(progress_line &progress) const {
        return {trace,
                message_limit,
                {envelopes, bus.patience()},
                [&progress](const char *what, size_t done, size_t total) { progress.show(what, done, total); }};
    }
};

} // namespace ribkit
