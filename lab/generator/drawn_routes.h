// What a generated fabric declares beside its links, and what happens to all of it while the lab runs.
#pragma once

#include "lab/generator/drawn_links.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace ribkit::lab {

class drawn_routes {
  public:
    drawn_routes(const fabric_plan &plan, drawn_links &links, draw &chance)
        : plan_(plan), links_(links), chance_(chance) {}

    /// Static routes, groups and tunnels: every other one concerns the local switch, and where something happens every
    /// third is added later only.
    std::string declarations();

    /// What happens, two things every two seconds. Behind the declarations.
    std::string events();

  private:
    struct declared {
        std::string name;
        bool up;
    };
    struct declared_group : declared {
        std::vector<std::string> members;
    };

    [[nodiscard]] uint32_t drawn_switch(uint32_t turn);
    declared head(std::string &text, const char *table, uint32_t turn);
    void add_statics(std::string &text);
    void add_groups(std::string &text);
    void add_labels(std::string &text);

    [[nodiscard]] std::string turned(const char *table, declared &one);
    [[nodiscard]] std::string happening(uint32_t turn);
    [[nodiscard]] std::string static_event();
    [[nodiscard]] std::string group_event();
    [[nodiscard]] std::string label_event();
    [[nodiscard]] std::string distance_event();

    const fabric_plan &plan_;
    drawn_links &links_;
    draw &chance_;
    std::vector<declared> statics_, labels_;
    std::vector<declared_group> groups_;
};

} // namespace ribkit::lab
