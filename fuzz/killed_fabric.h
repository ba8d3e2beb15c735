// A small fabric of chance, as the text of its file, and what it demands of the RIB's unicast table, computed in the
// plainest way: nothing here knows how the lab computes.
#pragma once

#include "base/text.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace ribkit::fuzz {

/// A route as a line: "vsan 1 0x020000 cost 750 by fc1/1 fc1/3".
inline std::string route_line(uint32_t vsan, const std::string &fcid, uint32_t cost,
                              const std::set<std::string> &ways) {
    std::string line = base::joined("vsan ", vsan, ' ', fcid, " cost ", cost, " by");
    for (const std::string &way : ways) {
        line.append(" ").append(way);
    }
    return line;
}

/// Switch N (from 1) is "sN" and has domain N; all is seen from the first. Links fail, come back and change their
/// costs.
class killed_fabric {
  public:
    /// Destination of a route that is no domain's.
    static constexpr const char *fixed = "0x630000";

    explicit killed_fabric(uint32_t seed) : random_(seed) {
        for (uint32_t one = 1; one <= switches; one++) {
            add_link(one, one % switches + 1); // a ring
            add_link(one, 1 + (one + 1 + below(switches - 3)) % switches);
        }
        for (uint32_t event = 0; event < events; event++) {
            change_link(event);
        }
    }

    [[nodiscard]] std::string text() const {
        std::string all = "name = \"killed\"\nlocal = \"s1\"\n"
                          "roles = [\"fspf\", \"static\", \"mcast\", \"label\", \"domain\"]\n";
        for (uint32_t vsan = 1; vsan <= vsans; vsan++) {
            all += base::joined("[[vsan]]\nid = ", vsan, '\n');
        }
        for (uint32_t one = 1; one <= switches; one++) {
            all += base::joined("[[switch]]\nname = \"s", one, "\"\ndomain = ", one, '\n');
        }
        for (const link &one : links_) {
            all += base::joined("[[link]]\nends = [\"", name(one.left), "\", \"", name(one.right),
                                "\"]\ncost = ", one.first_cost, one.in_all ? "" : "\nvsans = [1]", '\n');
        }
        all += "[[static]]\nname = \"fixed\"\nvsan = 1\nfcid = 0x630000\nmask = 0xff0000\nvia = \"s1 fc1/1\"\n"
               "[[group]]\nname = \"many\"\nfcid = 0xfffb01\nmembers = [\"s1 fc1/60\", \"s4 fc1/60\", \"s7 fc1/60\"]\n"
               "[[label]]\nname = \"copies\"\nvsan = 1\ntunnel = [\"s1 fc1/61\", \"s5 fc1/61\"]\nlabel = 100\n";
        return all + events_;
    }

    /// A line for each route to a domain, when all has happened.
    [[nodiscard]] std::set<std::string> demanded() const {
        std::set<std::string> lines;
        for (uint32_t vsan = 1; vsan <= vsans; vsan++) {
            const auto far = distances(vsan);
            for (uint32_t to = 2; to <= switches; to++) {
                if (far[1][to] != unreached) {
                    lines.insert(line_to(vsan, to, far));
                }
            }
        }
        return lines;
    }

  private:
    static constexpr uint32_t switches = 10;
    static constexpr uint32_t vsans = 2;
    static constexpr uint32_t events = 12;
    static constexpr uint32_t unreached = 1U << 30;

    struct end {
        uint32_t of, port;
    };
    struct link {
        end left, right;
        uint32_t first_cost;
        bool in_all; ///< VSANs, or in the first only
        uint32_t cost;
        bool up = true;
    };

    uint32_t below(uint32_t bound) { return static_cast<uint32_t>(random_()) % bound; }
    uint32_t drawn_cost() { return 250 * (1 + below(4)); }
    static std::string name(const end &one) { return base::joined('s', one.of, " fc1/", one.port); }

    void add_link(uint32_t left, uint32_t right) {
        if (left == right || !linked_.insert(std::minmax(left, right)).second) {
            return;
        }
        const uint32_t cost = drawn_cost();
        links_.push_back({{left, ++ports_[left]}, {right, ++ports_[right]}, cost, below(4) != 0, cost});
    }

    void change_link(uint32_t event) {
        link &one = links_[below(static_cast<uint32_t>(links_.size()))];
        one.up = !one.up || below(2) == 0;
        one.cost = drawn_cost();
        events_ += base::joined("[[event]]\nat = \"", event + 1, "s\"\nlink = \"", name(one.left), "\"\nstate = \"",
                                one.up ? "up" : "down", "\"\ncost = ", one.cost, '\n');
    }

    /// From everywhere to everywhere.
    [[nodiscard]] std::vector<std::vector<uint32_t>> distances(uint32_t vsan) const {
        std::vector far(switches + 1, std::vector<uint32_t>(switches + 1, unreached));
        for (uint32_t one = 1; one <= switches; one++) {
            far[one][one] = 0;
        }
        for (uint32_t round = 0; round < switches; round++) {
            for (const link &one : links_) {
                for (uint32_t to = 1; one.up && (vsan == 1 || one.in_all) && to <= switches; to++) {
                    uint32_t &left = far[one.left.of][to];
                    uint32_t &right = far[one.right.of][to];
                    left = std::min(left, right + one.cost);
                    right = std::min(right, left + one.cost);
                }
            }
        }
        return far;
    }

    [[nodiscard]] std::string line_to(uint32_t vsan, uint32_t to, const std::vector<std::vector<uint32_t>> &far) const {
        std::set<std::string> ways;
        for (const link &one : links_) {
            const bool is_left = one.left.of == 1;
            const end &here = is_left ? one.left : one.right;
            const end &there = is_left ? one.right : one.left;
            if (here.of == 1 && one.up && (vsan == 1 || one.in_all) && one.cost + far[there.of][to] == far[1][to]) {
                ways.insert(base::joined("fc1/", here.port));
            }
        }
        constexpr const char *digits = "0123456789abcdef";
        return route_line(vsan, base::joined("0x0", digits[to], "0000"), far[1][to], ways);
    }

    std::mt19937 random_;
    std::vector<link> links_;
    std::set<std::pair<uint32_t, uint32_t>> linked_;
    std::vector<uint32_t> ports_ = std::vector<uint32_t>(switches + 1);
    std::string events_;
};

} // namespace ribkit::fuzz
