// Who is linked to whom is decided first, and then written down. Only the raw numbers of the generator are used, so
// that every library draws the same fabric.
#include "lab/fabric_generator.h"

#include "base/text.h"
#include "lab/fabric.h"
#include "rib_codes.h"

#include <algorithm>
#include <numeric>
#include <random>

namespace ribkit::lab {

namespace {

constexpr uint32_t ports_of_module = 48;
constexpr uint32_t core_cost = 250;

class drawing {
  public:
    explicit drawing(const fabric_plan &plan) : plan_(plan), random_(plan.seed) {}

    std::string text() {
        connect();
        const std::string text = head() + vsans() + switches() + links() + events();
        return text + statics() + groups() + labels();
    }

  private:
    struct end {
        size_t owner;
        std::string port;
    };
    struct link {
        end a, b;
        uint32_t cost;
    };

    [[nodiscard]] uint32_t below(uint32_t limit) { return static_cast<uint32_t>(random_() % limit); }

    void connect() {
        ports_.assign(plan_.switches, 0);
        switch (plan_.shape) {
        case fabric_shape::core_edge:
            return connect_cores_and_edges();
        case fabric_shape::ring:
            return connect_ring();
        case fabric_shape::mesh:
            connect_ring();
            return connect_across();
        }
    }

    void connect_cores_and_edges() {
        const uint32_t pairs = 1 + plan_.switches / 64;
        cores_ = std::min(2 * pairs, plan_.switches - 1);
        for (uint32_t a = 0; a < cores_; a++) {
            for (uint32_t b = a + 1; b < cores_; b++) {
                join(a, b, core_cost);
            }
        }
        for (uint32_t edge = cores_; edge < plan_.switches; edge++) {
            const uint32_t core = 2 * below(pairs);
            for (uint32_t i = core; i < std::min(core + 2, cores_); i++) {
                join(edge, i, default_cost);
            }
        }
        local_ = cores_ + below(plan_.switches - cores_);
    }

    void connect_ring() {
        for (uint32_t i = 0; i < plan_.switches; i++) {
            join(i, (i + 1) % plan_.switches, default_cost);
        }
        local_ = below(plan_.switches);
    }

    void connect_across() {
        constexpr uint32_t costs[] = {250, 500, 1000};
        for (uint32_t i = 0; i < 2 * plan_.switches; i++) {
            const uint32_t from = below(plan_.switches);
            const uint32_t to = (from + 1 + below(plan_.switches - 1)) % plan_.switches;
            join(from, to, costs[below(3)]);
        }
    }

    void join(uint32_t a, uint32_t b, uint32_t cost) {
        end first = next_port(a);
        links_.push_back({std::move(first), next_port(b), cost});
    }

    end next_port(uint32_t owner) {
        const uint32_t port = ports_[owner]++;
        return {owner, base::joined("fc", 1 + port / ports_of_module, '/', 1 + port % ports_of_module)};
    }

    [[nodiscard]] std::string name_of(size_t index) const {
        if (plan_.shape != fabric_shape::core_edge) {
            return base::joined("switch-", index + 1);
        }
        return index < cores_ ? base::joined("core-", index + 1) : base::joined("edge-", index + 1 - cores_);
    }

    [[nodiscard]] std::string head() const {
        const std::string_view shape = shape_name(plan_.shape);
        return base::joined("# ribkit fabric --switches ", plan_.switches, " --vsans ", plan_.vsans, " --shape ", shape,
                            " --seed ", plan_.seed, plan_.events == 0 ? "" : base::joined(" --events ", plan_.events),
                            drawn("groups", plan_.groups), drawn("labels", plan_.labels),
                            drawn("statics", plan_.statics), "\nname = \"", shape, '-', plan_.switches,
                            "\"\nlocal = \"", name_of(local_), "\"\n");
    }

    static std::string drawn(const char *what, uint32_t count) {
        return count == 0 ? "" : base::joined(" --", what, ' ', count);
    }

    [[nodiscard]] std::string vsans() const {
        std::string text;
        for (uint32_t id = 1; id <= plan_.vsans; id++) {
            text += base::joined("\n[[vsan]]\nid = ", id, '\n');
        }
        return text;
    }

    [[nodiscard]] std::vector<uint32_t> drawn_domains() {
        std::vector<uint32_t> domains(RIB_LAST_DOMAIN);
        std::iota(domains.begin(), domains.end(), 1);
        for (uint32_t left = RIB_LAST_DOMAIN; left > 1; left--) {
            std::swap(domains[left - 1], domains[below(left)]);
        }
        return domains;
    }

    [[nodiscard]] std::string switches() {
        const std::vector<uint32_t> domains = drawn_domains();
        std::string text;
        for (uint32_t i = 0; i < plan_.switches; i++) {
            text += base::joined("\n[[switch]]\nname = \"", name_of(i), "\"\ndomain = ", domains[i], '\n');
        }
        return text;
    }

    [[nodiscard]] std::string end_text(const end &e) const {
        return base::joined('"', name_of(e.owner), ' ', e.port, '"');
    }

    [[nodiscard]] std::string links() const {
        std::string text;
        for (const link &l : links_) {
            text +=
                base::joined("\n[[link]]\nends = [", end_text(l.a), ", ", end_text(l.b), "]\ncost = ", l.cost, '\n');
        }
        return text;
    }

    [[nodiscard]] std::string events() {
        std::string text;
        for (uint32_t i = 0; i < plan_.events; i++) {
            const std::string failing = end_text(links_[below(static_cast<uint32_t>(links_.size()))].a);
            text += base::joined("\n[[event]]\nat = \"", 2 * i + 1, "s\"\nlink = ", failing, "\nstate = \"down\"\n");
            text += base::joined("\n[[event]]\nat = \"", 2 * i + 2, "s\"\nlink = ", failing, "\nstate = \"up\"\n");
        }
        return text;
    }

    /// Every other one concerns the local switch.
    [[nodiscard]] uint32_t drawn_switch(uint32_t turn) { return turn % 2 == 0 ? local_ : below(plan_.switches); }

    /// The head of a declared route, in any VSAN.
    [[nodiscard]] std::string declared(const char *table, uint32_t turn) {
        return base::joined("\n[[", table, "]]\nname = \"", table, '-', turn + 1, "\"\nvsan = ", 1 + below(plan_.vsans),
                            '\n');
    }

    [[nodiscard]] std::string statics() {
        std::string text;
        for (uint32_t i = 0; i < plan_.statics; i++) {
            const uint32_t from = drawn_switch(i);
            std::vector<std::string> ways;
            for (const link &l : links_) {
                for (const end *one : {&l.a, &l.b}) {
                    if (one->owner == from) {
                        ways.push_back(end_text(*one));
                    }
                }
            }
            const std::string head = declared("static", i);
            const uint32_t fcid = (1 + below(RIB_LAST_DOMAIN)) << 16 | i;
            text += base::joined(head, "fcid = ", fcid, "\nmask = ", RIB_MASK_PORT,
                                 "\nvia = ", ways[below(static_cast<uint32_t>(ways.size()))], '\n');
        }
        return text;
    }

    [[nodiscard]] std::string groups() {
        constexpr uint32_t first_group = 0xfffb00;
        std::string text;
        for (uint32_t i = 0; i < plan_.groups; i++) {
            const std::string head = declared("group", i);
            std::string members = end_text(next_port(drawn_switch(i)));
            for (uint32_t more = 1 + below(3); more > 0; more--) {
                members += ", " + end_text(next_port(below(plan_.switches)));
            }
            text += base::joined(head, "fcid = ", first_group + i, "\nmembers = [", members, "]\n");
        }
        return text;
    }

    [[nodiscard]] std::string labels() {
        constexpr uint32_t first_label = 16;
        std::string text;
        for (uint32_t i = 0; i < plan_.labels; i++) {
            const std::string head = declared("label", i);
            const std::string from = end_text(next_port(drawn_switch(i)));
            const std::string to = end_text(next_port(below(plan_.switches)));
            text += base::joined(head, "tunnel = [", from, ", ", to, "]\nlabel = ", first_label + i, '\n');
        }
        return text;
    }

    const fabric_plan &plan_;
    std::mt19937 random_;
    std::vector<uint32_t> ports_; ///< taken, by switch
    std::vector<link> links_;
    uint32_t cores_ = 0;
    uint32_t local_ = 0;
};

} // namespace

std::string_view shape_name(fabric_shape shape) { return shape_names[static_cast<size_t>(shape)]; }

fabric_shape shape_named(std::string_view name) {
    const auto *const found = std::find(shape_names.begin(), shape_names.end(), name);
    return static_cast<fabric_shape>(found - shape_names.begin());
}

std::string generate_fabric(const fabric_plan &plan) { return drawing(plan).text(); }

} // namespace ribkit::lab
