// One service a process; its calls are printed where the code under test prints, which keeps their order.
#include "testing/fake_qip.h"

#include "qip.h"
#include "testing/capture.h"
#include "yelk.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <span>
#include <string_view>

namespace ribkit::testing {

fake_service &service() {
    static fake_service one;
    return one;
}

namespace {

constexpr std::string_view stamp = "HH:MM:SS ";

bool is_stamp(std::string_view line) {
    return line.size() >= stamp.size() &&
           std::equal(stamp.begin(), stamp.end(), line.begin(), [](char pattern, char c) {
               return std::isupper(pattern) != 0 ? c >= '0' && c <= '9' : c == pattern;
           });
}

} // namespace

std::string transcript_of(const std::function<void()> &action) {
    std::string text = printed_by(action);
    for (size_t line = 0; line < text.size(); line = text.find('\n', line) + 1) {
        if (is_stamp(std::string_view{text}.substr(line))) {
            text.replace(line, stamp.size(), stamp);
        }
        if (text.find('\n', line) == std::string::npos) {
            break;
        }
    }
    return text;
}

namespace {

constexpr int junk_errno = 0x6e6e;

void fill(qip_ref &ref) {
    ++service().references;
    for (uint32_t &word : ref.word) {
        word = 0xfeed0000 + service().references;
    }
}

std::string hex(std::span<const uint8_t> bytes) {
    std::string text;
    for (const uint8_t byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        text += digits;
    }
    return text;
}

std::string told(const qip_ref *ref) {
    if (ref == nullptr) {
        return "null";
    }
    for (uint32_t number = 1; number <= service().references; ++number) {
        qip_ref filled{};
        std::fill(std::begin(filled.word), std::end(filled.word), 0xfeed0000 + number);
        if (std::memcmp(ref, &filled, sizeof filled) == 0) {
            return std::string{"#"}.append(std::to_string(number));
        }
    }
    return hex({reinterpret_cast<const uint8_t *>(ref), sizeof *ref});
}

std::string told(std::span<const uint32_t> words) {
    std::string text = "{";
    for (size_t index = 0; index < words.size(); ++index) {
        if (words[index] != 0) {
            char word[32];
            std::snprintf(word, sizeof word, "%s%zu:%x", text.size() == 1 ? "" : " ", index, words[index]);
            text.append(word);
        }
    }
    text += "}";
    return text;
}

template <typename Options> std::string told_options(const Options *opts) {
    return opts == nullptr ? "null" : told(std::span<const uint32_t>{opts->word});
}

/// Counts the call and decides whether it fails.
int result_of(const std::string &function) {
    const int call = ++service().calls[function];
    const auto planned = service().fail.find(function);
    const bool fails = planned != service().fail.end() && planned->second.first == call;
    errno = fails ? planned->second.second : junk_errno;
    return fails ? -1 : 0;
}

} // namespace

} // namespace ribkit::testing

using namespace ribkit::testing;

int qip_send(uint32_t handle, const struct qip_addr *addr, uint32_t opcode, const void *payload, uint32_t payload_size,
             struct qip_ref *ref_out, const struct qip_ref *req_ref, const struct qip_send_opts *opts) {
    std::printf("> send %x to %08x/%u opcode %u payload [%s] ref %s request %s opts %s\n", handle, addr->node,
                addr->sap, opcode, hex({static_cast<const uint8_t *>(payload), payload_size}).c_str(),
                told(ref_out).c_str(), told(req_ref).c_str(), told_options(opts).c_str());
    const int result = result_of("qip_send");
    if (result == 0 && ref_out != nullptr) {
        fill(*ref_out);
    }
    return result;
}

int qip_recv(uint32_t handle, struct qip_ref *ref_out, const struct qip_recv_opts *opts) {
    std::printf("> recv %x ref %s opts %s\n", handle, told(ref_out).c_str(), told_options(opts).c_str());
    const int result = result_of("qip_recv");
    if (result == 0) {
        fill(*ref_out);
    }
    return result;
}

int qip_drop(uint32_t handle, struct qip_ref *ref) {
    std::printf("> drop %x ref %s\n", handle, told(ref).c_str());
    return result_of("qip_drop");
}

uint32_t qip_rr_token_get(const struct qip_ref *ref) {
    std::printf("> token of %s\n", told(ref).c_str());
    return service().token;
}

void *qip_payload_get(const struct qip_ref *ref) {
    std::printf("> payload of %s\n", told(ref).c_str());
    return service().answer.data();
}

uint32_t qip_payload_size(const struct qip_ref *ref) {
    std::printf("> size of %s\n", told(ref).c_str());
    return static_cast<uint32_t>(service().answer.size());
}

const char yelk_dbg_modname[] = "module";

void yelk_hist_qip_event(uint32_t kind, const struct qip_ref *ref, uint32_t third, uint32_t fourth) {
    std::printf("> history %u ref %s %u %u\n", kind, told(ref).c_str(), third, fourth);
    errno = junk_errno;
}

int yelk_hist_event_subtype_check(uint32_t event_id, uint32_t subtype) {
    std::printf("> check %x %u\n", event_id, subtype);
    errno = junk_errno;
    return service().subtype_check;
}

void yelk_hist_event(uint32_t event_id, uint32_t length, const void *record) {
    uint32_t subtype = 0;
    std::memcpy(&subtype, record, sizeof subtype);
    const char *text = static_cast<const char *>(record) + sizeof subtype;
    std::printf("> event %x length %u subtype %u text %s", event_id, length, subtype, text);
    errno = junk_errno;
}

int yelk_chk_int(uint32_t level, uint32_t second, uint32_t third, uint32_t fourth) {
    std::printf("> level %u %u %u %u\n", level, second, third, fourth);
    errno = junk_errno;
    return service().debug_enabled;
}

int yapout(uint32_t first, const char *modname, uint32_t third, const char *format, ...) {
    char text[512];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    return std::printf("> yapout %u %s%s %u %s", first, modname, modname == yelk_dbg_modname ? "" : " (a copy)", third,
                       text);
}
