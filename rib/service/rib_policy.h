// What the RIB allows to whom: how many routes a client may have, and which client identities somebody who sends to it
// may use.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>

namespace ribkit::rib {

struct rib_policy {
    std::map<uint32_t, uint32_t> quotas;           ///< routes at most, by client; others have no limit
    std::map<std::string, std::set<uint32_t>> who; ///< clients that a NAME may use; empty: nobody is bound

    /// Whether a sender may speak for a client.
    [[nodiscard]] bool allows(const std::string &name, uint32_t client) const {
        const auto bound = who.find(name);
        return who.empty() || (bound != who.end() && bound->second.contains(client));
    }
};

} // namespace ribkit::rib
