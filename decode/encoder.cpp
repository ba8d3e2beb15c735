// The document and its messages: which there are, and what each is called. What stands in them is read by
// encoder_members.cpp and encoder_odd.cpp, and compared by encoder_close.cpp.
#include "decode/encoder.h"

#include "decode/decoder.h"
#include "decode/encoder_object.h"

#include <utility>

namespace ribkit::decode {

namespace {

constexpr std::string_view message_key = "message";
constexpr std::string_view fields_key = "fields";

} // namespace

void encoder::fail(const std::string &what) const { throw encode_error(path() + ": " + what); }

void encoder::fail_at(std::string_view key, const std::string &what) {
    path_.push_back({key});
    fail(what);
}

std::string encoder::path() const {
    std::string text;
    for (const step &s : path_) {
        if (s.key.empty()) {
            text.append("[").append(std::to_string(s.index)).append("]");
        } else {
            const std::string key = quoted(s.key);
            text.append(".").append(key, 1, key.size() - 2);
        }
    }
    return text.empty() ? "the input" : text;
}

void encoder::read(json_reader &in) {
    in_ = &in;
    path_.clear();
    try {
        const bool array = in.take('[');
        const char end = array ? ']' : '\0';
        for (size_t i = 0; in.peek() != end; ++i) {
            if (array && i != 0) {
                in.expect(',');
            }
            path_.assign({{{}, i}});
            read_message();
        }
        path_.clear();
        if (array) {
            in.expect(']');
            if (in.peek() != '\0') {
                fail("is no JSON: something stands behind the array");
            }
        }
    } catch (const json_error &error) {
        fail(error.what());
    }
}

void encoder::read_message() {
    bytes_.clear();
    const kind &what = message_fields(false);
    rib_check_report report{};
    if (what.check(bytes_.data(), static_cast<uint32_t>(bytes_.size()), &report) != 0) {
        std::string line(static_cast<size_t>(rib_check_report_str(&report, nullptr, 0)) + 1, '\0');
        rib_check_report_str(&report, line.data(), static_cast<uint32_t>(line.size()));
        line.pop_back();
        fail(line);
    }
    take_(what, bytes_.bytes());
}

const kind &encoder::kind_named(std::string_view name, bool carried) {
    const kind *found = find_kind(name);
    if (found == nullptr) {
        fail("no message is called " + quoted(name));
    }
    if (carried && found->odd == oddity::envelope) {
        fail("an envelope carries no envelope");
    }
    return *found;
}

/// `{"message": ..., "fields": ...}`, appended to what there is. Fields in front of the message's name are kept.
const kind &encoder::message_fields(bool carried) {
    const kind *what = nullptr;
    bool read = false;
    std::string early;
    in_->expect('{');
    for (bool first = true; in_->peek() != '}'; first = false) {
        if (!first) {
            in_->expect(',');
        }
        unknown_ = in_->string();
        const std::string_view key = unknown_ == message_key  ? message_key
                                     : unknown_ == fields_key ? fields_key
                                                              : std::string_view(unknown_);
        path_.push_back({key});
        in_->expect(':');
        if ((key == message_key && what != nullptr) || (key == fields_key && (read || !early.empty()))) {
            fail("stands twice");
        }
        if (key == "offsets") {
            in_->value(); // where the fields stand is known
        } else if (key == message_key) {
            what = &kind_named(in_->string(), carried);
        } else if (key == fields_key && what == nullptr) {
            early = in_->value();
        } else if (key == fields_key) {
            fields(what->fields(), bytes_.size(), false);
            read = true;
        } else {
            fail(key == "refused" ? "a refused message is not whole" : "is unknown here");
        }
        path_.pop_back();
    }
    in_->expect('}');
    if (what == nullptr) {
        fail_at(message_key, "is missing");
    }
    if (!early.empty()) {
        json_reader kept{std::string_view(early)};
        json_reader *const outer = std::exchange(in_, &kept);
        path_.push_back({fields_key});
        fields(what->fields(), bytes_.size(), false);
        path_.pop_back();
        in_ = outer;
    } else if (!read) {
        fail_at(fields_key, "is missing");
    }
    return *what;
}

} // namespace ribkit::decode
