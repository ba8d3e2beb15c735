// Where every part of a command's output ends up, and what happens to the files.
#include "testing/golden.h"
#include "testing/run_command.h"

#include <filesystem>
#include <unistd.h>

using namespace ribkit::testing;

namespace ribkit::cli {
namespace {

constexpr const char *small = " examples/fabrics/small.toml ";
constexpr const char *pages = " examples/messages/fcm.hex ";

std::string without_times(const std::string &output) { return output.substr(0, output.find("\n  seconds ")); }

bool is_json(const std::string &text) { return text.starts_with("{\n") || text.starts_with("[\n"); }

/// What a command leaves of a file that held something.
class kept_file {
  public:
    [[nodiscard]] const std::string &path() const { return file_.path(); }
    [[nodiscard]] std::string content() const { return file_content(path()); }
    [[nodiscard]] bool is_kept() const { return content() == "of an earlier run"; }

  private:
    testing::input_file file_{"of an earlier run"};
};

/// Descriptor 9 of the shells that are started, while it lives.
class pipe_without_reader {
  public:
    pipe_without_reader() {
        int ends[2];
        EXPECT_EQ(pipe(ends), 0);
        dup2(ends[1], number);
        close(ends[0]);
        close(ends[1]);
    }
    pipe_without_reader(const pipe_without_reader &) = delete;
    pipe_without_reader &operator=(const pipe_without_reader &) = delete;
    ~pipe_without_reader() { close(number); }

  private:
    static constexpr int number = 9;
};

} // namespace

TEST(command_output, goes_into_the_file_that_is_named) {
    for (const std::string &arguments :
         {std::string("show fcm") + pages, std::string("show --list"), std::string("text rib_uuid 12"),
          std::string("fabric --seed 3"), std::string("text --list --json"), std::string("show --list --json")}) {
        const kept_file file;
        const std::string expected = testing::run_command(arguments).output;
        EXPECT_EQ(testing::run_command(arguments + " -o " + file.path() + " 2>&1").output, "") << arguments;
        EXPECT_EQ(file.content(), expected) << arguments;
        EXPECT_EQ(testing::run_command(arguments + " -o -").output, expected) << arguments;
        EXPECT_EQ(testing::run_command(arguments + " --output=" + file.path()).exit_code, 0);
        EXPECT_EQ(file.content(), expected) << arguments;
    }
}

TEST(command_output, of_a_lab_holds_texts_displays_and_traces_in_their_order) {
    const kept_file untraced;
    EXPECT_EQ(testing::run_command(std::string("lab") + small + "-o " + untraced.path()).output, "");
    EXPECT_EQ(without_times(untraced.content()),
              without_times(testing::run_command(std::string("lab") + small).output));
    const kept_file file;
    testing::run_command(std::string("lab --trace") + small + "-o " + file.path());
    const std::string traced = file.content();
    const size_t start = traced.find("at 0s: the fabric starts");
    const size_t message = traced.find(" FSPF sent RIB update with response vsan 1 for 4 ucast ");
    const size_t sent = traced.find("  fspf: 8 routes added, in 3 messages");
    ASSERT_NE(sent, std::string::npos);
    EXPECT_LT(start, message);
    EXPECT_LT(message, sent);
}

TEST(command_output, json_stands_alone_or_beside_in_a_file) {
    const kept_file text;
    const kept_file json;
    EXPECT_TRUE(is_json(testing::run_command(std::string("lab --json") + small).output));
    EXPECT_EQ(testing::run_command(std::string("lab --json") + small + "-o " + text.path()).output, "");
    EXPECT_TRUE(is_json(text.content()));
    EXPECT_EQ(testing::run_command(std::string("lab") + small + "--json=" + json.path() + " -o " + text.path()).output,
              "");
    EXPECT_TRUE(is_json(json.content()));
    EXPECT_EQ(text.content().substr(0, 18), "small: 5 switches,");
    const std::string beside = testing::run_command("text uuid 12 --json=" + json.path()).output;
    EXPECT_EQ(beside, "12  fspf\n");
    EXPECT_EQ(json.content(), testing::run_command("text uuid 12 --json").output);
    EXPECT_TRUE(is_json(testing::run_command(std::string("lab --json") + small + "--envelopes").output));
}

TEST(command_output, of_a_file_whose_name_is_no_utf_8_is_json_too) {
    const temporary_directory home;
    const std::string path = home.file("f\xff.toml");
    const std::string content = file_content("examples/fabrics/small.toml");
    std::ofstream(path) << content.substr(content.find("local = "));
    const testing::outcome run = testing::run_command("lab --json " + path + " 2>&1");
    EXPECT_EQ(run.exit_code, 0);
    EXPECT_NE(run.output.find("f\xef\xbf\xbd.toml\""), std::string::npos) << run.output;
    EXPECT_NE(testing::run_command("lab --check " + path).output.find("f\\xff.toml: 5 switches"), std::string::npos);
}

TEST(command_output, json_in_two_words_is_refused_with_the_spelling) {
    const auto refused = [](const std::string &name) {
        return "ribkit " + name + ": --json=x.json writes to that file, --json alone to standard output\n";
    };
    EXPECT_EQ(testing::complaint(std::string("lab --json x.json") + small), refused("lab"));
    EXPECT_EQ(testing::complaint(std::string("client --json x.json") + small), refused("client"));
    EXPECT_EQ(testing::complaint("rib --json x.json"), refused("rib"));
    EXPECT_EQ(testing::complaint("routes --json x.json"), refused("routes"));
    EXPECT_EQ(testing::complaint("show fcm --json x.json"), "x.json: cannot be read: No such file or directory\n");
    for (const std::string &arguments :
         {std::string("lab --json -") + small, std::string("lab --json -"), std::string("routes --json -"),
          std::string("rib --json -"), std::string("text --json - rib_uuid 1")}) {
        EXPECT_EQ(testing::complaint(arguments),
                  "ribkit " + arguments.substr(0, arguments.find(' ')) +
                      ": --json alone writes to standard output, --json=FILE to a file\n");
    }
    for (const std::string value : {"", "-"}) {
        EXPECT_EQ(testing::complaint(std::string("lab --json=" + value) + small),
                  "--json=" + value +
                      ": names no file: --json alone writes to standard output, --json=FILE to a file\n");
    }
}

TEST(command_output, an_empty_name_of_a_file_is_a_mistake) {
    for (const std::string &arguments :
         {std::string("lab -o ''") + small, std::string("lab --faults ''") + small, std::string("lab ''"),
          std::string("rib ''"), std::string("client ''"), std::string("show fcu ''"), std::string("fabric -o ''")}) {
        EXPECT_NE(testing::complaint(arguments).find(": the name of the file is empty (see ribkit "),
                  std::string::npos);
    }
}

TEST(command_output, nothing_overwrites_what_is_read) {
    const temporary_directory home;
    const std::string input = home.file("input");
    const std::string content = file_content("examples/fabrics/small.toml");
    std::ofstream(input) << content;
    std::filesystem::create_symlink(input, home.file("symbolic"));
    std::filesystem::create_hard_link(input, home.file("hard"));
    for (const std::string name : {"input", "symbolic", "hard"}) {
        const std::string refused = home.file(name) + ": is read by this command, and so not written\n";
        EXPECT_EQ(testing::complaint("lab -o " + home.file(name) + " " + input), refused);
        EXPECT_EQ(testing::complaint("lab - --json=" + home.file(name) + " < " + input), refused);
        EXPECT_EQ(testing::complaint("client --json=" + home.file(name) + " " + input), refused);
        EXPECT_EQ(testing::complaint("rib -o " + home.file(name) + " " + input), refused);
    }
    const std::string bytes = home.file("bytes");
    std::filesystem::copy_file(RIBKIT_SOURCE_DIR "/examples/messages/fcm.hex", bytes);
    EXPECT_EQ(testing::complaint("show fcm " + bytes + " -o " + bytes),
              bytes + ": is read by this command, and so not written\n");
    const std::string faults = home.file("faults");
    std::ofstream(faults) << "seed 1\n";
    EXPECT_EQ(testing::complaint("lab --faults " + faults + small + "-o " + faults),
              faults + ": is read by this command, and so not written\n");
    EXPECT_EQ(file_content(input), content);
    EXPECT_EQ(file_content(faults), "seed 1\n");
    const std::string twice = home.file("new");
    EXPECT_EQ(testing::complaint("lab --json=" + twice + " -o " + twice + small),
              twice + ": would be written twice: as text and as JSON\n");
}

TEST(command_output, a_file_without_anything_new_is_as_it_was) {
    const kept_file file;
    const temporary_directory home;
    for (const std::string &path : {file.path(), home.file("new")}) {
        EXPECT_EQ(testing::run_command("text rib_nothing 1 -o " + path + " 2>&1").exit_code, 2);
        EXPECT_EQ(testing::run_command(std::string("lab --bus nats://127.0.0.1:1 --wait 0") + small + "2>&1 -o " + path)
                      .exit_code,
                  1);
        EXPECT_EQ(
            testing::run_command(std::string("lab --bus nats://127.0.0.1:1 --wait 0") + small + "2>&1 --json=" + path)
                .exit_code,
            1);
    }
    EXPECT_TRUE(file.is_kept());
    EXPECT_FALSE(std::filesystem::exists(home.file("new")));
}

TEST(command_output, that_cannot_be_opened_or_written_is_one_line) {
    EXPECT_EQ(testing::complaint("fabric -o /no/where"), "/no/where: cannot be written: No such file or directory\n");
    EXPECT_EQ(testing::complaint("text uuid 1 -o examples"), "examples: cannot be written: Is a directory\n");
    for (const char *arguments : {"text uuid 1 -o /dev/full", "text uuid 1 --json=/dev/full", "fabric -o /dev/full"}) {
        const testing::outcome run = testing::run_command(std::string(arguments) + " 2>&1 >/dev/null");
        EXPECT_EQ(run.exit_code, 1);
        EXPECT_EQ(run.output, "ribkit: /dev/full: cannot be written: No space left on device\n");
    }
    const testing::outcome traced = testing::run_command(std::string("lab --trace") + small + "2>&1 >/dev/full");
    EXPECT_EQ(traced.exit_code, 1);
    EXPECT_EQ(traced.output, "ribkit: standard output cannot be written: No space left on device\n");
}

TEST(command_output, whose_reader_has_left_ends_without_a_word) {
    const pipe_without_reader as_descriptor_9;
    for (const std::string &arguments :
         {std::string("lab") + small, std::string("lab --trace") + small, std::string("lab --json") + small,
          std::string("show --list"), std::string("fabric"), std::string("text --list"), std::string("--help"),
          std::string("show fcm") + pages}) {
        EXPECT_EQ(testing::run_line(RIBKIT_COMMAND " " + arguments + " 2>&1 >&9; echo $?").output, "141\n")
            << arguments;
    }
}

} // namespace ribkit::cli
