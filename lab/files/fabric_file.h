// Fabric files: TOML, described in docs/fabric-file.md.
#pragma once

#include "lab/fabric.h"

#include <string>
#include <string_view>

namespace ribkit::lab {

/// Reads a whole fabric from a file, or from standard input where the path is "-". Throws an input_error of one line,
/// "FILE:LINE: what is wrong", or "FILE: why it cannot be read".
fabric read_fabric_file(const std::string &path);

/// Reads a file that has [[quota]] and [[who]] tables only, likewise.
rib::rib_policy read_policy_file(const std::string &path);

/// The same from text; `file` is what the errors call it.
fabric parse_fabric(std::string_view text, const std::string &file);
rib::rib_policy parse_policy(std::string_view text, const std::string &file);

} // namespace ribkit::lab
