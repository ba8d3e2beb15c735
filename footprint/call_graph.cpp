// Reads the compiler's call graphs, and walks them.
#include "footprint/call_graph.h"

#include <algorithm>
#include <cstdlib>
#include <cxxabi.h>
#include <sstream>
#include <string_view>

namespace ribkit::footprint {
namespace {

constexpr const char *through_a_pointer = "__indirect_call";

/// What stands in quotes behind a key.
std::string quoted(const std::string &line, const std::string &key) {
    const size_t key_at = line.find(key + ": \"");
    if (key_at == std::string::npos) {
        return {};
    }
    const size_t begin = key_at + key.size() + 3;
    return line.substr(begin, line.find('"', begin) - begin);
}

/// "uint32_t ribkit::mem::f<3>(int)" without what is returned and taken, and without arguments of templates.
std::string without_signature(const std::string &declaration) {
    std::string name;
    int depth = 0;
    for (const char c : declaration) {
        if (depth == 0 && c == '(') {
            break;
        }
        depth += c == '<' ? 1 : 0;
        if (depth == 0 && c == ' ') {
            name.clear();
        } else if (depth == 0) {
            name += c;
        }
        depth -= c == '>' ? 1 : 0;
    }
    return name;
}

/// What the compiler calls a function, in words: in front of a static one stands its file.
std::string demangled(const std::string &title) {
    const std::string name = title.substr(title.rfind(':') + 1);
    int status = 0;
    char *const text = abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status);
    std::string words = status == 0 ? text : name;
    std::free(text);
    const std::string_view unnamed = "(anonymous namespace)";
    for (size_t at = words.find(unnamed); at != std::string::npos; at = words.find(unnamed)) {
        words.replace(at, unnamed.size(), "{anonymous}");
    }
    return words;
}

/// The bytes of "...\n48 bytes (static)".
bool read_frame(const std::string &label, uint32_t &bytes) {
    const size_t end = label.find(" bytes (");
    if (end == std::string::npos) {
        return false;
    }
    bytes = static_cast<uint32_t>(std::stoul(label.substr(label.rfind("\\n", end) + 2)));
    return true;
}

} // namespace

bool matches(const std::string &pattern, const std::string &name) {
    const size_t star = pattern.find('*');
    if (star == std::string::npos) {
        return pattern == name;
    }
    if (name.compare(0, star, pattern, 0, star) != 0) {
        return false;
    }
    const std::string rest = pattern.substr(star + 1);
    for (size_t at = star; at <= name.size(); ++at) {
        if (matches(rest, name.substr(at))) {
            return true;
        }
    }
    return false;
}

std::vector<indirect_calls> read_indirect_calls(std::istream &in) {
    std::vector<indirect_calls> all;
    for (std::string line; std::getline(in, line);) {
        const size_t colon = line.find(": ");
        if (line.empty() || line[0] == '#' || colon == std::string::npos) {
            continue;
        }
        indirect_calls calls{line.substr(0, colon), {}};
        std::istringstream callees(line.substr(colon + 2));
        for (std::string callee; callees >> callee;) {
            calls.callees.push_back(callee);
        }
        all.push_back(calls);
    }
    return all;
}

void call_graph::add(std::istream &in) {
    for (std::string line; std::getline(in, line);) {
        if (line.rfind("node:", 0) == 0) {
            add_node(line);
        } else if (line.rfind("edge:", 0) == 0) {
            add_edge(line);
        }
    }
}

void call_graph::add_node(const std::string &line) {
    const std::string title = quoted(line, "title");
    names_[title] = without_signature(demangled(title));
    uint32_t bytes = 0;
    if (read_frame(quoted(line, "label"), bytes)) { // a template may be there several times
        frames_[title] = std::max(frames_[title], bytes);
    }
}

void call_graph::add_edge(const std::string &line) {
    calls_[quoted(line, "sourcename")].insert(quoted(line, "targetname"));
}

std::string call_graph::readable(const std::string &function) const {
    const auto name = names_.find(function);
    return name == names_.end() || name->second.empty() ? function : name->second;
}

std::vector<std::string> call_graph::resolve(const std::vector<indirect_calls> &calls) {
    std::vector<std::string> unnamed;
    for (auto &[caller, callees] : calls_) {
        if (callees.erase(through_a_pointer) == 0) {
            continue;
        }
        const auto named =
            std::find_if(calls.begin(), calls.end(),
                         [&, of = readable(caller)](const indirect_calls &c) { return matches(c.caller, of); });
        if (named == calls.end()) {
            unnamed.push_back(readable(caller));
            continue;
        }
        for (const auto &[function, frame] : frames_) {
            for (const std::string &pattern : named->callees) {
                if (matches(pattern, readable(function))) {
                    callees.insert(function);
                }
            }
        }
    }
    return unnamed;
}

call_graph::path call_graph::deepest(const std::string &function, std::set<std::string> &recursive) const {
    struct walk {
        const call_graph &graph;
        std::set<std::string> &recursive;
        std::map<std::string, path> known;
        std::set<std::string> open;

        /// The frames of the deepest way from a function to another one, which is left out; 0 where there is none.
        uint32_t round_from(const std::string &at, const std::string &to) {
            const auto frame = graph.frames_.find(at);
            const auto calls = graph.calls_.find(at);
            if (frame == graph.frames_.end() || calls == graph.calls_.end() || !open.insert(at).second) {
                return 0;
            }
            uint32_t longest = 0;
            for (const std::string &callee : calls->second) {
                const uint32_t below = callee == to ? 0 : round_from(callee, to);
                longest = callee == to || below != 0 ? std::max(longest, frame->second + below) : longest;
            }
            open.erase(at);
            return longest;
        }

        path from(const std::string &at) {
            if (const auto found = known.find(at); found != known.end()) {
                return found->second;
            }
            const auto frame = graph.frames_.find(at);
            if (frame == graph.frames_.end()) {
                return {};
            }
            if (!open.insert(at).second) {
                recursive.insert(graph.readable(at));
                return {};
            }
            path longest;
            if (const auto calls = graph.calls_.find(at); calls != graph.calls_.end()) {
                for (const std::string &callee : calls->second) {
                    if (path below = from(callee); below.bytes > longest.bytes) {
                        longest = std::move(below);
                    }
                }
            }
            open.erase(at);
            longest.bytes += frame->second;
            longest.functions.insert(longest.functions.begin(),
                                     graph.readable(at) + " " + std::to_string(frame->second));
            if (std::any_of(open.begin(), open.end(), [&](const auto &outer) { return graph.reaches(at, outer); })) {
                return longest; // within a round that its outermost function counts
            }
            longest.bytes += (graph.nesting - 1) * round_from(at, at);
            return known[at] = longest;
        }
    };
    return walk{*this, recursive, {}, {}}.from(function);
}

bool call_graph::reaches(const std::string &from, const std::string &to) const {
    std::set<std::string> seen{from};
    std::vector<std::string> left{from};
    while (!left.empty()) {
        const std::string at = left.back();
        left.pop_back();
        if (at == to) {
            return true;
        }
        if (const auto calls = calls_.find(at); calls != calls_.end()) {
            for (const std::string &callee : calls->second) {
                if (seen.insert(callee).second) {
                    left.push_back(callee);
                }
            }
        }
    }
    return false;
}

} // namespace ribkit::footprint
