// One function a mistake. A mutation makes a few of them, one after the other.
#include "fuzz/mutation.h"

#include <algorithm>
#include <array>

namespace ribkit::fuzz {

namespace {

using engine = std::mt19937;

size_t below(engine &random, size_t limit) { return limit == 0 ? 0 : random() % limit; }

struct piece {
    size_t start, length;
};

/// Any piece, mostly a short one.
piece piece_of(const std::string &text, engine &random) {
    const size_t start = below(random, text.size());
    const size_t longest = random() % 4 == 0 ? text.size() - start : std::min<size_t>(text.size() - start, 16);
    return {start, below(random, longest + 1)};
}

bool is_word(char c) { return c != ' ' && c != '\n' && c != '\t' && c != ',' && c != '"'; }

/// The word at a random place.
piece word_of(const std::string &text, engine &random) {
    size_t start = below(random, text.size());
    while (start > 0 && is_word(text[start - 1])) {
        start--;
    }
    size_t end = start;
    while (end < text.size() && is_word(text[end])) {
        end++;
    }
    return {start, end - start};
}

constexpr std::array odd_words{"0",
                               "-1",
                               "4294967295",
                               "4294967296",
                               "65536",
                               "4095",
                               "9223372036854775808",
                               "18446744073709551616",
                               "1e999",
                               "nan",
                               "0x",
                               "999999999999999999999999999999",
                               "\xff\xfe",
                               "\xc3",
                               "\xe2\x80\xae",
                               "\x1b[2J",
                               "'''",
                               "\"\"\"",
                               "1979-05-27T07:32:00Z",
                               "*4294967295",
                               "one-in 0",
                               "\\u0000",
                               "#",
                               "=",
                               "[[event]]\n",
                               "every 0 0 0"};

std::string repeated(const std::string &what, size_t times) {
    std::string all;
    for (size_t i = 0; i < times; i++) {
        all += what;
    }
    return all;
}

void flip(std::string &text, engine &random) {
    if (!text.empty()) {
        text[below(random, text.size())] ^= static_cast<char>(1U << random() % 8);
    }
}

void leave_out(std::string &text, engine &random) {
    const piece p = piece_of(text, random);
    text.erase(p.start, p.length);
}

void repeat(std::string &text, engine &random) {
    const piece p = piece_of(text, random);
    text.insert(p.start, repeated(text.substr(p.start, p.length), 1 + below(random, 3)));
}

void replace_word(std::string &text, engine &random) {
    const piece p = word_of(text, random);
    text.replace(p.start, p.length, odd_words[below(random, odd_words.size())]);
}

void lengthen_word(std::string &text, engine &random) {
    const piece p = word_of(text, random);
    text.insert(p.start, below(random, 20000), text.empty() ? '1' : text[p.start % text.size()]);
}

void nest(std::string &text, engine &random) {
    constexpr std::array openings{"[", "{a=", "[[", "{ a = [", "a."};
    const piece p = word_of(text, random);
    text.insert(p.start, repeated(openings[below(random, openings.size())], below(random, 3000)));
}

void put_zero(std::string &text, engine &random) { text.insert(below(random, text.size() + 1), 1, '\0'); }

void put_noise(std::string &text, engine &random) {
    std::string noise(below(random, 64), ' ');
    std::generate(noise.begin(), noise.end(), [&] { return static_cast<char>(random()); });
    text.insert(below(random, text.size() + 1), noise);
}

void change_line_ends(std::string &text, engine &random) {
    const std::string end = random() % 2 == 0 ? "\r\n" : "\r";
    for (size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + end.size())) {
        text.replace(at, 1, end);
    }
}

void swap_words(std::string &text, engine &random) {
    const piece one = word_of(text, random);
    const piece other = word_of(text, random);
    const std::string word = text.substr(other.start, other.length);
    text.replace(one.start, one.length, word);
}

using change = void (*)(std::string &text, engine &random);
constexpr change changes[] = {flip, leave_out, repeat,    replace_word,     lengthen_word,
                              nest, put_zero,  put_noise, change_line_ends, swap_words};

void splice(std::string &text, const std::string &other, engine &random) {
    const piece p = piece_of(other, random);
    text.insert(below(random, text.size() + 1), other.substr(p.start, p.length));
}

} // namespace

std::string mutated(std::string text, const std::string &other, std::mt19937 &random) {
    for (size_t left = 1 + random() % 4; left > 0; left--) {
        const size_t chosen = below(random, std::size(changes) + 1);
        chosen == std::size(changes) ? splice(text, other, random) : changes[chosen](text, random);
    }
    return text;
}

} // namespace ribkit::fuzz
