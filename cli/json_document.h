// A command's JSON: a document that is handed on while it is written, since the routes of a large RIB fill no memory
// well.
#pragma once

#include "cli/command_output.h"
#include "decode/json_text.h"

#include <string_view>

namespace ribkit::cli {

class json_document {
  public:
    explicit json_document(command_output &out)
        : out_([&out](std::string_view piece) { out.print_json(piece); }), text_(out_, false) {}
    json_document(const json_document &) = delete;
    json_document &operator=(const json_document &) = delete;

    decode::json_text &text() { return text_; }

    /// At its end, or what is written is lost.
    void finish() {
        text_.end_line();
        out_.flush();
    }

  private:
    decode::output out_;
    decode::json_text text_;
};

} // namespace ribkit::cli
