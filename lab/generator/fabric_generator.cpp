// Who is linked to whom is decided first, and then written down.
#include "lab/generator/fabric_generator.h"

#include "base/text.h"
#include "lab/generator/drawn_routes.h"
#include "rib_codes.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace ribkit::lab {

namespace {

std::string option(const char *what, uint32_t count) { return count == 0 ? "" : base::joined(" --", what, ' ', count); }

std::string head(const fabric_plan &plan, const drawn_links &links) {
    const std::string_view shape = shape_name(plan.shape);
    return base::joined("# ribkit fabric --switches ", plan.switches, " --vsans ", plan.vsans, " --shape ", shape,
                        " --seed ", plan.seed, option("events", plan.events), option("groups", plan.groups),
                        option("labels", plan.labels), option("statics", plan.statics), option("modules", plan.modules),
                        "\nname = \"", shape, '-', plan.switches, "\"\nlocal = \"", links.name_of(links.local()),
                        "\"\n");
}

std::string vsans(const fabric_plan &plan) {
    std::string text;
    for (uint32_t id = 1; id <= plan.vsans; id++) {
        text += base::joined("\n[[vsan]]\nid = ", id, '\n');
    }
    return text;
}

std::vector<uint32_t> drawn_domains(draw &chance) {
    std::vector<uint32_t> domains(RIB_LAST_DOMAIN);
    std::iota(domains.begin(), domains.end(), 1);
    for (uint32_t left = RIB_LAST_DOMAIN; left > 1; left--) {
        std::swap(domains[left - 1], domains[chance.below(left)]);
    }
    return domains;
}

std::string switches(const fabric_plan &plan, const drawn_links &links, draw &chance) {
    const std::vector<uint32_t> domains = drawn_domains(chance);
    std::string text;
    for (uint32_t i = 0; i < plan.switches; i++) {
        text += base::joined("\n[[switch]]\nname = \"", links.name_of(i), "\"\ndomain = ", domains[i], '\n');
    }
    return text;
}

std::string links_text(const drawn_links &links) {
    std::string text;
    for (const drawn_link &l : links.all()) {
        text +=
            base::joined("\n[[link]]\nends = [", links.text(l.a), ", ", links.text(l.b), "]\ncost = ", l.cost, '\n');
    }
    return text;
}

std::string modules(const fabric_plan &plan) {
    std::string text;
    for (uint32_t number = 1; number <= plan.modules; number++) {
        text += base::joined("\n[[module]]\nnumber = ", number, '\n');
    }
    return text;
}

} // namespace

std::string_view shape_name(fabric_shape shape) { return shape_names[static_cast<size_t>(shape)]; }

fabric_shape shape_named(std::string_view name) {
    const auto *const found = std::find(shape_names.begin(), shape_names.end(), name);
    return static_cast<fabric_shape>(found - shape_names.begin());
}

std::string generate_fabric(const fabric_plan &plan) {
    draw chance(plan.seed);
    drawn_links links(plan, chance);
    std::string text = head(plan, links) + vsans(plan) + switches(plan, links, chance) + links_text(links);
    drawn_routes routes(plan, links, chance);
    text += routes.declarations() + modules(plan);
    return text + routes.events();
}

} // namespace ribkit::lab
