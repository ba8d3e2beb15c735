// The manual pages of the commands, as Markdown, which is read as it is or made into a page for man.
#pragma once

#include "cli/manual/description.h"

#include <string>

namespace ribkit::cli {

/// Of a command.
std::string page_of(const described_command &one, const std::vector<described_command> &all);

/// Of ribkit itself.
std::string page_of(const std::vector<described_command> &all);

} // namespace ribkit::cli
