// A name that nothing has: what the user may have meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ribkit::base {

/// Those of the names that hold `wanted`, or differ from it by two letters at most.
std::vector<std::string_view> near_names(std::string_view wanted, const std::vector<std::string_view> &names);

/// "; near: fcu, fcl"; empty where nothing is near.
std::string near_text(std::string_view wanted, const std::vector<std::string_view> &names);

/// "fcx: no KIND has this name; near: fcu, fcl; COMMAND names them all"
std::string no_such_name(std::string_view wanted, std::string_view kind, const std::vector<std::string_view> &names,
                         std::string_view command);

} // namespace ribkit::base
