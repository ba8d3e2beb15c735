// What is read is shown as it comes: a run of messages may be longer than memory.
#include "cli/messages/decode_command.h"

#include "base/input_error.h"
#include "base/near_names.h"
#include "base/text.h"
#include "cli/json_document.h"
#include "cli/messages/message_kinds.h"
#include "cli/messages/network_input.h"
#include "decode/decoder.h"

#include <iomanip>
#include <memory>

namespace ribkit::cli {

namespace {

using decode::byte_buffer;
using decode::json_form;
using decode::json_text;
using decode::kind;

/// What the user says an envelope carries; null where the operation code tells.
const kind *carried_by(const kind &what, const std::string &name) {
    if (name.empty()) {
        return nullptr;
    }
    const kind &carried = kind_named(name);
    if (what.odd != decode::oddity::envelope || carried.odd == decode::oddity::envelope) {
        throw base::input_error(
            base::joined(what.name, " carries no ", carried.name, ": only an envelope carries a message"));
    }
    return &carried;
}

/// Where decoded messages go: text, JSON or both.
class shown_messages {
  public:
    shown_messages(const decode_options &options, command_output &out)
        : text_to_([&out](std::string_view piece) { out.print(piece); }),
          json_to_([&out](std::string_view piece) { out.print_json(piece); }) {
        if (out.wants_text()) {
            text_.emplace(text_to_, options.offsets);
        }
        if (out.wants_json()) {
            json_.emplace(json_to_, options.lines ? json_form::lines : json_form::array, options.offsets);
        }
    }

    decode::text_writer *text() { return text_ ? &*text_ : nullptr; }
    decode::json_writer *json() { return json_ ? &*json_ : nullptr; }

    void flush() {
        text_to_.flush();
        json_to_.flush();
    }
    void finish() {
        if (json_) {
            json_->finish();
        }
        flush();
    }

  private:
    decode::output text_to_, json_to_;
    std::optional<decode::text_writer> text_;
    std::optional<decode::json_writer> json_;
};

/// Shows one message after the other. What is left of the bytes is looked at again once it has grown by a part of
/// itself, so that all looks together take no longer than a few.
void show_all(network_input &input, decode::decoder &messages, shown_messages &shown) {
    byte_buffer bytes;
    bool more = true;
    size_t enough = 1;
    while (more && !messages.refused()) {
        shown.flush();
        more = input.read(bytes);
        if (more && bytes.size() < enough) {
            continue;
        }
        bytes.remove_front(messages.take(bytes.bytes(), more));
        enough = bytes.size() + bytes.size() / 4 + 1;
    }
}

base::input_error complaint(const std::string &title, const decode::refusal &refused) {
    return base::input_error(base::joined(title, ": message ", refused.number, " at byte ", refused.offset, ": ",
                                          decode::report_text(refused.report)));
}

void decode_file(const decode_options &options) {
    const kind &what = kind_named(options.message);
    const kind *carried = carried_by(what, options.carries);
    network_input input(options.file, options.form);
    command_output out(options.output, {options.file});
    const auto shown = std::make_unique<shown_messages>(options, out);
    decode::decoder messages(what, carried, shown->text(), shown->json());
    try {
        show_all(input, messages, *shown);
    } catch (const base::input_error &) {
        shown->finish();
        throw;
    }
    shown->finish();
    out.finish();
    if (messages.refused()) {
        throw complaint(input.title(), *messages.refused());
    }
}

/// A line for each of `all`, and an object of an array.
template <typename Range, typename Line, typename Members>
void print_list(const output_options &options, const Range &all, const Line &line_of, const Members &members_of) {
    command_output out(options);
    for (const auto &one : all) {
        out.print_line(line_of(one));
    }
    json_document document(out);
    json_text &json = document.text();
    json.list(all, [&](const auto &one) { json.object([&] { members_of(json, one); }); });
    document.finish();
    out.finish();
}

void list_kinds(const output_options &options) {
    print_list(
        options, decode::kinds(),
        [](const kind &k) {
            const std::string size = base::joined(k.wire->size, " bytes", k.is_open() ? " and what follows" : "");
            return base::joined(std::left, std::setw(26), k.name, size, *k.what == '\0' ? "" : ": ", k.what);
        },
        [](json_text &json, const kind &k) {
            json.member("message").text(k.name);
            json.member("bytes").number(k.wire->size);
            json.member("open").truth(k.is_open());
        });
}

void read_all(const decode_options &options, byte_buffer &bytes) {
    network_input input(options.file, options.form);
    while (input.read(bytes)) {
        if (bytes.size() > decode::largest_message) {
            throw base::input_error(
                base::joined(input.title(), ": holds more than ", decode::largest_message, " bytes"));
        }
    }
}

void list_guesses(const decode_options &options) {
    byte_buffer bytes;
    read_all(options, bytes);
    print_list(
        options.output, decode::guesses(bytes.bytes()),
        [](const decode::guess &g) {
            return base::joined(std::left, std::setw(26), g.what->name, g.messages,
                                g.messages == 1 ? " message" : " messages");
        },
        [](json_text &json, const decode::guess &g) {
            json.member("message").text(g.what->name);
            json.member("messages").number(g.messages);
        });
}

} // namespace

const kind &kind_named(const std::string &name) {
    const kind *found = decode::find_kind(name);
    if (found == nullptr) {
        throw base::input_error(base::no_such_name(name, "message", decode::kind_names(name), "ribkit decode --list"));
    }
    return *found;
}

int run_decode(const decode_options &options) {
    if (options.list) {
        list_kinds(options.output);
    } else if (options.guess) {
        list_guesses(options);
    } else {
        decode_file(options);
    }
    return 0;
}

} // namespace ribkit::cli
