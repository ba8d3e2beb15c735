// Who calls whom, and with how much stack: as the compiler says beside every object (-fcallgraph-info=su). What the
// library does not define, the C library and the services, counts nothing: these are frames of our own.
#pragma once

#include <cstdint>
#include <istream>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace ribkit::footprint {

/// The calls of one function that go through a pointer: patterns ("*" stands for any characters) of its readable name
/// and of the names that it may call.
struct indirect_calls {
    std::string caller;
    std::vector<std::string> callees;
};

/// Lines "CALLER: CALLEE CALLEE..."; what begins with # is a comment.
std::vector<indirect_calls> read_indirect_calls(std::istream &in);

bool matches(const std::string &pattern, const std::string &name);

class call_graph {
  public:
    /// Adds what one object's file says. @param object as it is called in messages
    void add(std::istream &in);

    /// Replaces the calls through pointers by those that the list names. @return callers that no line names
    std::vector<std::string> resolve(const std::vector<indirect_calls> &calls);

    struct path {
        uint32_t bytes = 0;
        std::vector<std::string> functions; ///< from the outermost
    };

    /// The deepest way from a function down. One that calls itself, however indirectly, is named in `recursive`, and
    /// the way from it to itself counts `nesting` - 1 times more.
    path deepest(const std::string &function, std::set<std::string> &recursive) const;

    /// Whether a way leads from one function to another.
    bool reaches(const std::string &from, const std::string &to) const;

    /// Whether the function is one of ours, with a frame.
    bool defines(const std::string &function) const { return frames_.count(function) != 0; }

    /// How a function is called in messages: its name without parameters.
    std::string readable(const std::string &function) const;

    uint32_t nesting = 1;

  private:
    void add_node(const std::string &line);
    void add_edge(const std::string &line);

    std::map<std::string, uint32_t> frames_;
    std::map<std::string, std::string> names_;
    std::map<std::string, std::set<std::string>> calls_;
};

} // namespace ribkit::footprint
