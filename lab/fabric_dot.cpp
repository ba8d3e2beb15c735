// Switches are nodes, links are edges. What is special to Graphviz in a name is quoted.
#include "lab/fabric_dot.h"

#include "base/printable.h"
#include "base/text.h"
#include "lab/run_text.h"

namespace ribkit::lab {

namespace {

/// Text between quotation marks. In a label, a backslash would begin a code, and an ampersand a character's name.
std::string quoted(const std::string &text) {
    std::string result = "\"";
    for (const char c : base::printable(text)) {
        result += c == '"' ? "\\\"" : c == '\\' ? "\\\\" : c == '&' ? "&amp;" : std::string(1, c);
    }
    return result + '"';
}

std::string node(const fabric &f, const fabric_switch &one) {
    const bool is_local = one.domain == f.local().domain;
    return base::joined("  ", quoted(one.name), " [label=\"", one.name, "\\ndomain ", one.domain, '"',
                        is_local ? ", peripheries=2" : "", "];\n");
}

std::string carried(const fabric &f, const fabric_link &link) {
    std::string text;
    for (const uint32_t vsan : link.vsans.size() == f.vsans().size() ? std::vector<uint32_t>() : link.vsans) {
        text += base::joined(text.empty() ? "\\nVSAN " : ", ", vsan);
    }
    return text;
}

std::string edge(const fabric &f, const fabric_link &link) {
    const auto &[one, other] = link.ends;
    return base::joined("  ", quoted(f.switches()[one.owner].name), " -- ", quoted(f.switches()[other.owner].name),
                        " [label=\"", link.cost, carried(f, link), "\", taillabel=", quoted(one.name),
                        ", headlabel=", quoted(other.name), link.up ? "" : ", style=dashed", "];\n");
}

} // namespace

std::string fabric_dot(const fabric &f) {
    std::string text = base::joined("graph fabric {\n  label=", quoted(head_text(f)),
                                    ";\n  node [shape=box];\n  edge [fontsize=10, labelfontsize=8];\n");
    for (const fabric_switch &one : f.switches()) {
        text += node(f, one);
    }
    for (const fabric_link &link : f.links()) {
        text += edge(f, link);
    }
    return text + "}\n";
}

} // namespace ribkit::lab
