// What counts as depth, and on which line it is too much.
#include "lab/files/nesting.h"

#include "base/input_error.h"

#include <gtest/gtest.h>
#include <string>

namespace ribkit::lab {
namespace {

/// 0 where there is none.
uint32_t line_of_mistake(const std::string &text) {
    try {
        refuse_deep_nesting(text);
    } catch (const base::line_error &error) {
        return error.line;
    }
    return 0;
}

} // namespace

TEST(nesting, of_strings_and_comments_does_not_count) {
    const std::string deep(100, '[');
    const std::string dots(2000, '.');
    for (const std::string &text :
         {"# " + deep, R"(a = ")" + deep + dots + '"', "a = '" + deep + "'", "a = \"\"\"\n" + deep + "\n\"\"\"",
          "a = '''\n" + deep + dots + "'''", R"(a = "\")" + deep + '"', R"(a = """")" + deep + R"("""")",
          R"(a = "" # )" + deep, "a = [1.5, 2.5]\n" + std::string(1000, '.'), R"(a = """\""")" + deep + R"(""")"}) {
        EXPECT_EQ(line_of_mistake(text), 0U) << text;
    }
}

TEST(nesting, behind_strings_and_comments_counts_on_its_line) {
    const std::string deep = "\n" + std::string(65, '{');
    for (const char *text :
         {R"(# ")", R"(a = "#")", R"(a = '"')", R"(a = """#""")", R"(a = """""")", "a = ''''''", R"(a = '\')",
          R"(a = """x""""")", "a = '''x''''", R"(a = "open)", R"(a = "")", R"(a = "\\")"}) {
        EXPECT_EQ(line_of_mistake(text + deep), 2U) << text;
        EXPECT_EQ(line_of_mistake(std::string(text) + "\n\n" + deep), 4U) << text;
    }
    EXPECT_EQ(line_of_mistake("a = \"\"\"\n\n\"\"\"" + deep), 4U);
    EXPECT_EQ(line_of_mistake(R"(["""a"""",)" + std::string(64, '{')), 1U) << "a mark more ends the same string";
    EXPECT_EQ(line_of_mistake(std::string(64, '[') + std::string(70, ']') + std::string(64, '[')), 0U);
    const std::string ends_in_escape = R"("\)";
    EXPECT_EQ(line_of_mistake(deep + ends_in_escape), 2U);
    EXPECT_EQ(line_of_mistake(deep.substr(0, deep.size() - 1) + ends_in_escape), 0U) << "a text may end there";
    EXPECT_EQ(line_of_mistake("a = [\n" + std::string(600, '.') + "\n" + std::string(600, '.')), 3U);
}

} // namespace ribkit::lab
