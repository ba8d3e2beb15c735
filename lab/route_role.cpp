// A row for each role: its client's identity, its table, and what computes its routes.
#include "lab/route_role.h"

#include "lab/sources/wanted.h"
#include "rib_codes.h"

#include <algorithm>
#include <numeric>

namespace ribkit::lab {

namespace {

template <class Table> class role_with : public route_role {
  public:
    using source = clients::wanted_tables<Table> (*)(const fabric &f, const fabric_routes &paths);

    role_with(role which, uint32_t uuid, source computes, const std::string &url,
              const clients::client_options &options)
        : name_(role_name(which)), uuid_(uuid), source_(computes), client_(url, uuid, options) {}

    [[nodiscard]] std::string_view name() const override { return name_; }
    void compute(const fabric &f, const fabric_routes &paths) override {
        wanted_ = source_(f, paths);
        client_.set_distance(f.declared.distance_of(uuid_));
    }
    [[nodiscard]] size_t wanted() const override {
        return std::accumulate(wanted_.begin(), wanted_.end(), size_t{0},
                               [](size_t sum, const auto &one) { return sum + one.second->size(); });
    }
    clients::client_traffic converge() override { return client_.converge(wanted_); }
    [[nodiscard]] const clients::client_traffic &traffic() const override { return client_.traffic(); }

    // What FSPF has left is read: most of it is right, and there is much of it.
    void start_over() override {
        client_.start_over(uuid_ == RIB_CLIENT_FSPF ? clients::takeover::reads : clients::takeover::merges);
    }
    void find_rib() override { client_.find_rib(); }
    bool rib_started(std::chrono::milliseconds limit) override { return client_.rib_started(limit); }
    void suppose_start() override { client_.suppose_start(); }
    void keep_registered() override { client_.keep_registered(); }
    void stay_registered() override { client_.stay_registered(); }
    void close() override { client_.close(); }

  private:
    std::string_view name_;
    uint32_t uuid_;
    source source_;
    clients::route_client<Table> client_;
    clients::wanted_tables<Table> wanted_;
};

uint32_t identity_of(role which) {
    constexpr std::array<uint32_t, role_names.size()> identities{RIB_CLIENT_FSPF, RIB_CLIENT_CONFIG, RIB_CLIENT_MCAST,
                                                                 RIB_CLIENT_FCMPLS, RIB_CLIENT_FCDOMAIN};
    return identities[static_cast<size_t>(which)];
}

std::unique_ptr<route_role> make_role(role which, const std::string &url, const clients::client_options &options) {
    const uint32_t uuid = identity_of(which);
    using unicast = role_with<clients::unicast_table>;
    switch (which) {
    case role::fspf:
        return std::make_unique<unicast>(
            which, uuid, [](const fabric &, const fabric_routes &paths) { return paths.all(); }, url, options);
    case role::static_routes:
        return std::make_unique<unicast>(
            which, uuid, [](const fabric &f, const fabric_routes &) { return static_routes(f); }, url, options);
    case role::mcast:
        return std::make_unique<role_with<clients::multicast_table>>(
            which, uuid, [](const fabric &f, const fabric_routes &) { return group_routes(f); }, url, options);
    case role::label:
        return std::make_unique<role_with<clients::label_table>>(
            which, uuid, [](const fabric &f, const fabric_routes &) { return label_routes(f); }, url, options);
    case role::domain:
        break;
    }
    return std::make_unique<unicast>(which, uuid, controller_routes, url, options);
}

} // namespace

role role_named(std::string_view name) {
    return static_cast<role>(std::find(role_names.begin(), role_names.end(), name) - role_names.begin());
}

std::vector<role> roles_of(const fabric &f, const std::vector<std::string> &asked) {
    if (const auto &names = asked.empty() ? f.roles : asked; !names.empty()) {
        std::vector<role> named;
        std::transform(names.begin(), names.end(), std::back_inserter(named), role_named);
        return named;
    }
    std::vector<role> needed{role::fspf};
    const auto add = [&](bool declares, role which) {
        if (declares) {
            needed.push_back(which);
        }
    };
    add(!f.declared.statics().empty(), role::static_routes);
    add(!f.declared.groups().empty(), role::mcast);
    add(!f.declared.labels().empty(), role::label);
    return needed;
}

route_roles make_roles(const std::vector<role> &wanted, const fabric &f, const std::string &url,
                       const clients::client_options &options) {
    route_roles made;
    for (const role which : wanted) {
        clients::client_options of_role = options;
        const bool is_alone = wanted.size() == 1 && !f.declared.distance_of(identity_of(which));
        of_role.name = is_alone ? "" : role_name(which);
        made.push_back(make_role(which, url, of_role));
    }
    return made;
}

} // namespace ribkit::lab
