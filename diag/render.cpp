// Reads forms and writes what they say; slowly, so that it shares nothing with the rows of the displays.
#include "diag/render.h"
#include "diag/text/expected_texts.h"

#include <vector>

namespace ribkit::diag {

namespace {

struct field {
    char kind = 0;
    size_t width = 0;
    std::string name;
    uint32_t mask = 0xffffffff;
    int shift = 0;
    char size = 'w';
    size_t offset = 0;
};

/// Reads "t10:rib_uuid&ff>4@w0".
field parse(const std::string &text) {
    field parsed;
    parsed.kind = text[0];
    const size_t at = text.find('@');
    const size_t colon = text.find(':');
    const size_t mask = text.find('&');
    const size_t shift = text.find('>');
    const std::string width = text.substr(1, text.find_first_not_of("0123456789", 1) - 1);
    parsed.width = width.empty() ? 0 : std::stoul(width);
    if (colon != std::string::npos) {
        parsed.name = text.substr(colon + 1, text.find_first_of("&>@") - colon - 1);
    }
    if (mask != std::string::npos) {
        parsed.mask = static_cast<uint32_t>(std::stoul(text.substr(mask + 1), nullptr, 16));
    }
    if (shift != std::string::npos) {
        parsed.shift = std::stoi(text.substr(shift + 1));
    }
    parsed.size = text[at + 1];
    parsed.offset = std::stoul(text.substr(at + 2));
    return parsed;
}

uint32_t value_of(const field &from, const uint8_t *bytes) {
    uint32_t value = 0;
    const size_t width = from.size == 'w' ? 4 : from.size == 'h' ? 2 : 1;
    for (size_t i = 0; i < width; ++i) {
        value = value * 256 + bytes[from.offset + i];
    }
    return (value & from.mask) >> from.shift;
}

std::string left(std::string text, size_t width) {
    while (text.size() < width) {
        text += ' ';
    }
    return text;
}

std::string column(const std::string &text, size_t width) {
    return width == 0 ? text : left(text, width).substr(0, width);
}

std::string control(const uint8_t *bytes) {
    const auto truth = [&](uint32_t bit) { return (bytes[2] & bit) != 0 ? "T" : "F"; };
    return "push=" + std::to_string(bytes[1]) + " pop=" + std::to_string(bytes[0]) + " use_UP=" + truth(0x80) +
           " use_TTL=" + truth(0x40) + " dec_TTL=" + truth(0x20);
}

std::string stack_entry(uint32_t word) {
    return digits(word / 4096, 16, 5) + ":" + digits(word / 512 % 8, 16) + ":" + digits(word / 256 % 2, 16) + ":" +
           digits(word % 256, 16, 2) + "'h";
}

std::string flags(uint32_t value) {
    std::string text = "R P N";
    text[0] = value % 2 != 0 ? 'D' : 'R';
    text[2] = value / 4 % 2 != 0 ? 'V' : 'P';
    text[4] = value / 8 % 2 != 0 ? 'A' : 'N';
    return text;
}

std::string text_of(const field &what, const uint8_t *bytes) {
    const uint32_t value = value_of(what, bytes);
    switch (what.kind) {
    case 'd':
        return left(digits(value, 10), what.width);
    case 'r':
        return digits(value, 10, what.width, ' ');
    case 'x':
        return digits(value, 16, what.width);
    case 'X':
        return left(digits(value, 16), what.width);
    case 't':
        return column(expected(what.name).of(value), what.width);
    case 'i':
        return column(interface_text(value), what.width);
    case 'm':
        return calendar_text(value);
    case 'f':
        return flags(value);
    case 'c':
        return control(bytes + what.offset);
    case 'l':
        return stack_entry(value);
    case 'T':
        return value != 0 ? "T" : "F";
    default:
        return "?";
    }
}

/// Year, month and day of a day since 1970, counted year by year.
struct date {
    uint32_t year = 1970;
    uint32_t month = 0;
    uint32_t day = 0;
};

date date_of(uint32_t days) {
    const auto is_leap = [](uint32_t year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; };
    date found;
    for (uint32_t length = 365; days >= length; length = is_leap(found.year) ? 366 : 365) {
        days -= length;
        ++found.year;
    }
    const uint32_t lengths[] = {31, is_leap(found.year) ? 29U : 28U, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    while (days >= lengths[found.month]) {
        days -= lengths[found.month++];
    }
    found.day = days + 1;
    return found;
}

} // namespace

uint32_t word_at(const uint8_t *bytes, size_t offset) {
    field word;
    word.offset = offset;
    return value_of(word, bytes);
}

std::string interface_text(uint32_t if_index) { return if_index == 0 ? "null intf" : "if" + digits(if_index, 16); }

// Coordinated universal time.
std::string calendar_text(uint32_t seconds) {
    const date when = date_of(seconds / 86400);
    const std::string weekdays = "ThuFriSatSunMonTueWed";
    const std::string months = "JanFebMarAprMayJunJulAugSepOctNovDec";
    const auto two = [](uint32_t value) { return digits(value, 10, 2); };
    return weekdays.substr(size_t{seconds / 86400 % 7} * 3, 3) + " " + months.substr(size_t{when.month} * 3, 3) + " " +
           digits(when.day, 10, 2, ' ') + " " + two(seconds / 3600 % 24) + ":" + two(seconds / 60 % 60) + ":" +
           two(seconds % 60) + " " + digits(when.year, 10);
}

std::string render(const std::string &form, const uint8_t *bytes) {
    std::string text;
    for (size_t at = 0; at < form.size(); ++at) {
        if (form[at] != '{') {
            text += form[at];
            continue;
        }
        const size_t end = form.find('}', at);
        text += text_of(parse(form.substr(at + 1, end - at - 1)), bytes);
        at = end;
    }
    return text;
}

} // namespace ribkit::diag
