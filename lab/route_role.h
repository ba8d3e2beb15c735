// The clients of a run: where each one's routes come from, and who brings them to the RIB.
#pragma once

#include "clients/route_client.h"
#include "lab/fabric.h"
#include "lab/fabric_routes.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ribkit::lab {

enum class role : uint8_t {
    fspf,          ///< shortest paths to all domains
    static_routes, ///< what a manager has configured
    mcast,         ///< groups, and their distribution trees
    label,         ///< tunnels and other label routes
    domain,        ///< the domain manager: the way to every domain's controller
};

/// The words of the command line, in the order of the roles; each is also the name under which its client registers.
inline constexpr std::array<std::string_view, 5> role_names{"fspf", "static", "mcast", "label", "domain"};
constexpr std::string_view role_name(role one) { return role_names[static_cast<size_t>(one)]; }
role role_named(std::string_view name); ///< one of role_names

/// A client of the RIB with its source of routes. What it does and throws is what route_client says.
class route_role {
  public:
    virtual ~route_role() = default;
    [[nodiscard]] virtual std::string_view name() const = 0;

    /// Finds out what is wanted now, and how near the client is.
    virtual void compute(const fabric &f, const fabric_routes &paths) = 0;
    /// Routes that are wanted.
    [[nodiscard]] virtual size_t wanted() const = 0;
    virtual clients::client_traffic converge() = 0;
    [[nodiscard]] virtual const clients::client_traffic &traffic() const = 0;

    virtual void start_over() = 0;
    virtual void find_rib() = 0;
    virtual bool rib_started(std::chrono::milliseconds limit) = 0;
    virtual void suppose_start() = 0;
    virtual void keep_registered() = 0;
    virtual void stay_registered() = 0;
    virtual void close() = 0;
};

using route_roles = std::vector<std::unique_ptr<route_role>>;

/// Those that are asked for; else those that the fabric lists, or else FSPF and those for which it declares something.
/// @param asked of role_names
std::vector<role> roles_of(const fabric &f, const std::vector<std::string> &asked = {});

/// Each with a client of its own. A client alone, with the distance that it has anyhow, does not register.
route_roles make_roles(const std::vector<role> &wanted, const fabric &f, const std::string &url,
                       const clients::client_options &options);

} // namespace ribkit::lab
