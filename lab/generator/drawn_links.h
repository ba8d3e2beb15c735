// Which switches a generated fabric has, who is linked to whom, and which interfaces are taken.
#pragma once

#include "lab/generator/fabric_generator.h"

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace ribkit::lab {

/// Draws what is left to chance. Only the raw numbers are used, so that every library draws the same.
class draw {
  public:
    explicit draw(uint32_t seed) : random_(seed) {}

    [[nodiscard]] uint32_t below(uint32_t limit) { return static_cast<uint32_t>(random_() % limit); }
    template <class All> const auto &one_of(const All &all) { return all[below(static_cast<uint32_t>(all.size()))]; }

  private:
    std::mt19937 random_;
};

/// An interface of a switch.
struct drawn_end {
    size_t owner;
    std::string port;
};

struct drawn_link {
    drawn_end a, b;
    uint32_t cost;
};

class drawn_links {
  public:
    drawn_links(const fabric_plan &plan, draw &chance);

    [[nodiscard]] const std::vector<drawn_link> &all() const { return links_; }
    [[nodiscard]] uint32_t local() const { return local_; } ///< index of the local switch
    [[nodiscard]] std::string name_of(size_t index) const;  ///< of a switch

    /// The interfaces of a switch that have links.
    [[nodiscard]] std::vector<drawn_end> ends_of(uint32_t owner) const;
    /// An interface that nothing has taken.
    drawn_end next_port(uint32_t owner);
    /// "edge-1 fc1/1", in quotes.
    [[nodiscard]] std::string text(const drawn_end &one) const;

  private:
    void connect_cores_and_edges();
    void connect_ring();
    void connect_across();
    void join(uint32_t a, uint32_t b, uint32_t cost);

    const fabric_plan &plan_;
    draw &chance_;
    std::vector<uint32_t> ports_; ///< taken, by switch
    std::vector<drawn_link> links_;
    uint32_t cores_ = 0;
    uint32_t local_ = 0;
};

} // namespace ribkit::lab
