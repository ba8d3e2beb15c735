// The words in front of the cursor are read as the parser reads them, but none of them is found wrong.
#include "cli/manual/completion.h"

#include "base/text.h"

#include <algorithm>

namespace ribkit::cli {

namespace {

bool has_name(const described_option &option, const std::string &name) {
    return std::find(option.names.begin(), option.names.end(), name) != option.names.end();
}

bool takes_value(const described_option &option) { return !option.value.empty(); }

/// How far a command line has come.
class line {
  public:
    line(const described_command &command, const words &given) : command_(command), given_(given) {
        for (size_t at = 1; at + 1 < given.size(); at++) {
            read(given[at]);
        }
    }

    [[nodiscard]] completions complete() const {
        const std::string &typed = given_.back();
        completions found;
        if (waiting_ != nullptr) {
            add_values(found, *waiting_, "", typed);
        } else if (const size_t equals = typed.find('='); !ended_ && typed.starts_with("--") && equals != typed.npos) {
            const described_option *option = named(typed.substr(0, equals));
            if (option != nullptr && (takes_value(*option) || option->may_have_file)) {
                add_values(found, *option, typed.substr(0, equals + 1), typed.substr(equals + 1));
            }
        } else if (!ended_ && typed.starts_with('-')) {
            add_options(found, typed);
        } else if (const described_option *argument = next_argument(); argument != nullptr) {
            add_values(found, *argument, "", typed);
        } else if (!ended_ && typed.empty()) {
            add_options(found, typed);
        }
        return found;
    }

  private:
    /// The option of this name, which no argument has.
    [[nodiscard]] const described_option *named(const std::string &name) const {
        const auto found = std::find_if(command_.options.begin(), command_.options.end(),
                                        [&](const described_option &option) { return has_name(option, name); });
        return found == command_.options.end() ? nullptr : &*found;
    }

    void read(const std::string &word) {
        if (waiting_ != nullptr) {
            waiting_ = nullptr;
        } else if (ended_ || word.size() < 2 || !word.starts_with('-')) {
            arguments_++;
        } else if (word == "--") {
            ended_ = true;
        } else if (const described_option *option = named(word.substr(0, word.find('='))); option != nullptr) {
            seen_.push_back(option);
            waiting_ = takes_value(*option) && word.find('=') == word.npos ? option : nullptr;
        }
    }

    /// The one at this place; the last of all where that may be repeated.
    [[nodiscard]] const described_option *next_argument() const {
        const described_option *last = nullptr;
        size_t left = arguments_;
        for (const described_option &option : command_.options) {
            if (option.is_argument && left-- == 0) {
                return is_excluded(option) ? nullptr : &option;
            }
            last = option.is_argument ? &option : last;
        }
        return last != nullptr && last->repeats ? last : nullptr;
    }

    [[nodiscard]] bool is_excluded(const described_option &option) const {
        return std::any_of(seen_.begin(), seen_.end(), [&](const described_option *other) {
            return std::any_of(option.excludes.begin(), option.excludes.end(),
                               [&](const std::string &name) { return has_name(*other, name); });
        });
    }

    [[nodiscard]] bool may_follow(const described_option &option) const {
        const bool again = std::find(seen_.begin(), seen_.end(), &option) != seen_.end() && !option.repeats;
        return !option.is_argument && !again && !is_excluded(option);
    }

    void add_options(completions &found, const std::string &typed) const {
        for (const described_option &option : command_.options) {
            const std::string &name = option.names.back();
            if (may_follow(option) && name.starts_with(typed)) {
                found.words.push_back({name, option.what});
            }
        }
    }

    /// @param prefix of the words, in front of the values
    void add_values(completions &found, const described_option &option, const std::string &prefix,
                    const std::string &typed) const {
        const auto add = [&](const std::string &value, const std::string &what) {
            if (value.starts_with(typed)) {
                found.words.push_back({prefix + value, what});
            }
        };
        for (const std::string &choice : option.choices) {
            add(choice, "");
        }
        const value_type *type = value_type_named(option.value);
        if (option.choices.empty() && type != nullptr && type->known != nullptr) {
            for (const candidate &one : type->known(words(given_.begin(), given_.end() - 1))) {
                add(one.word, one.what);
            }
        }
        found.endings = option.endings;
    }

    const described_command &command_;
    const words &given_;
    const described_option *waiting_ = nullptr; ///< for its value
    std::vector<const described_option *> seen_;
    size_t arguments_ = 0;
    bool ended_ = false; ///< every word is an argument
};

} // namespace

completions completed(const std::vector<described_command> &all, const words &given) {
    completions found;
    if (given.size() > 1) {
        const auto command =
            std::find_if(all.begin(), all.end(), [&](const auto &one) { return one.row->name == given.front(); });
        return command == all.end() ? found : line(*command, given).complete();
    }
    const std::string typed = given.empty() ? "" : given.front();
    const auto add = [&](const std::string &word, const char *what) {
        if (word.starts_with(typed) && word.starts_with('-') == typed.starts_with('-')) {
            found.words.push_back({word, what});
        }
    };
    for (const described_command &one : all) {
        add(one.row->name, one.row->description);
    }
    add("--help", "what there is");
    add("--version", "the version, and the digest of all messages");
    return found;
}

std::string completion_lines(const completions &found) {
    std::string lines = found.endings + "\n";
    for (const candidate &one : found.words) {
        lines += base::joined(one.word, '\t', one.what, '\n');
    }
    return lines;
}

} // namespace ribkit::cli
