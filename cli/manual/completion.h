// What may stand where the cursor is. A shell asks the command itself, so that each word comes from the declarations.
#pragma once

#include "cli/manual/description.h"
#include "cli/manual/value_types.h"

#include <string>
#include <vector>

namespace ribkit::cli {

struct completions {
    std::vector<candidate> words; ///< whole words, as they are typed
    std::string endings;          ///< of the files that may stand there, too; "*": any; empty: none
};

/// @param given the words behind "ribkit"; the last is the one that is being typed, perhaps empty
completions completed(const std::vector<described_command> &all, const words &given);

/// A line of the files' endings, then one for each word, with what it is behind a tab.
std::string completion_lines(const completions &found);

/// What a shell reads to complete ribkit's words. Throws an input_error for one of another name.
std::string completion_script(const std::string &shell);

} // namespace ribkit::cli
