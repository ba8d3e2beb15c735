// One run from the fabric file to the summary.
#include "tools/lab.h"

#include "rib_show.h"
#include "tools/duration.h"
#include "tools/fabric_file.h"
#include "tools/input_error.h"
#include "tools/lab_text.h"
#include "tools/progress.h"
#include "tools/rib_service.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <thread>
#include <unistd.h>

namespace ribkit {

namespace {

constexpr const char *bus = "local:";
constexpr size_t few_routes = 64;

/// Which routes of the RIB are displayed.
class table_choice {
  public:
    table_choice(const std::string &text, const fabric &f) : text_(text) {
        if (text == "auto" || text == "all" || text == "none") {
            return;
        }
        uint32_t id = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
        if (error != std::errc() || end != text.data() + text.size()) {
            throw input_error(joined("--tables ", text, ": \"auto\", \"all\", \"none\" or the number of a VSAN"));
        }
        const auto &vsans = f.vsans();
        if (std::none_of(vsans.begin(), vsans.end(), [&](const fabric_vsan &vsan) { return vsan.id == id; })) {
            throw input_error(joined("--tables ", text, ": the fabric has no VSAN ", id));
        }
        vsan_ = id;
    }

    [[nodiscard]] bool shows(const route_key &key, size_t routes) const {
        return vsan_ == key.vsan || text_ == "all" || (text_ == "auto" && routes <= few_routes);
    }
    [[nodiscard]] bool hides_many(size_t routes) const { return text_ == "auto" && routes > few_routes; }

  private:
    std::string text_;
    std::optional<uint32_t> vsan_;
};

/// Where the JSON goes: opened before the run, so that a run is not in vain.
using output_file = std::unique_ptr<std::FILE, void (*)(std::FILE *)>;

/// Standard output for nobody else: what is printed from now on, by the RIB's allocators too, goes to standard error.
std::FILE *claim_standard_output() {
    const int claimed = dup(STDOUT_FILENO);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    return fdopen(claimed, "w");
}

output_file open_output(const std::string &path) {
    if (path.empty()) {
        return {nullptr, [](std::FILE *) {}};
    }
    output_file file(path == "-" ? claim_standard_output() : std::fopen(path.c_str(), "w"),
                     [](std::FILE *f) { std::fclose(f); });
    if (!file) {
        throw input_error(joined(path, ": cannot be written: ", std::strerror(errno)));
    }
    return file;
}

class lab {
  public:
    lab(const lab_options &options, fabric f)
        : options_(options), fabric_(std::move(f)), tables_(options.tables, fabric_),
          json_(open_output(options.json_file)), quiet_(options.json_file == "-"),
          rib_(bus, fabric_.spaces(), options.trace), client_(bus, make_client_options()) {}

    int run() {
        say(joined(head_text(fabric_, options_.fabric_file), '\n'));
        start_ = std::chrono::steady_clock::now();
        say("at 0s: the fabric starts");
        step({});
        const auto &events = fabric_.events();
        for (auto next = events.begin(); next != events.end();) {
            const auto later =
                std::find_if(next, events.end(), [&](const auto &event) { return event.at != next->at; });
            happen(next->at, {next, later});
            next = later;
        }
        rib_.stop();
        run_.routes = rib_.tables().routes();
        run_.memory = rib_.tables().store().memory();
        finish();
        return run_.total.refused == 0 ? 0 : 1;
    }

  private:
    client_options make_client_options() {
        client_options options{options_.trace, options_.message_limit, {}};
        options.progress = [this](const char *what, size_t done, size_t total) { progress_.show(what, done, total); };
        return options;
    }

    void wait_until(std::chrono::milliseconds at) const {
        if (options_.real_time) {
            std::fflush(stdout);
            std::this_thread::sleep_until(start_ + at);
        }
    }

    void happen(std::chrono::milliseconds at, std::vector<fabric_event> events) {
        wait_until(at);
        for (const fabric_event &event : events) {
            fabric_.apply(event);
            say(joined("at ", duration_text(at), ": ", event_text(fabric_, event)));
        }
        step({at, std::move(events), {}});
    }

    void step(lab_step now) {
        now.traffic = client_.converge(fabric_);
        progress_.clear();
        say(joined("  ", traffic_text(now.traffic)));
        run_.total += now.traffic;
        run_.steps.push_back(std::move(now));
    }

    void finish() {
        if (!quiet_) {
            print_tables();
            if (options_.memory) {
                rib_.tables().store().show();
            }
            say(joined('\n', summary_text(run_)));
        }
        if (json_ && (std::fputs(lab_json(fabric_, run_).c_str(), json_.get()) < 0 || std::fflush(json_.get()) != 0)) {
            throw std::runtime_error(joined(options_.json_file, ": cannot be written: ", std::strerror(errno)));
        }
    }

    void say(const std::string &line) const {
        if (!quiet_) {
            std::puts(line.c_str());
        }
    }

    void print_tables() const {
        const held_routes &routes = run_.routes;
        bool first = true;
        for (const auto &[key, held] : routes) {
            if (tables_.shows(key, routes.size())) {
                rib_show_fcu(first ? 1 : 0, ucast_entry(key, held).data());
                first = false;
            }
        }
        if (tables_.hides_many(routes.size())) {
            std::puts("\nThe tables are long: --tables all displays them, --tables VSAN those of one VSAN.");
        }
    }

    const lab_options &options_;
    fabric fabric_;
    table_choice tables_;
    output_file json_;
    bool quiet_;
    progress_line progress_;
    rib_service rib_;
    fspf_client client_;
    lab_run run_;
    std::chrono::steady_clock::time_point start_;
};

} // namespace

double lab_run::routes_per_second() const { return seconds() > 0 ? static_cast<double>(total.sent()) / seconds() : 0; }

int run_lab(const lab_options &options) { return lab(options, read_fabric_file(options.fabric_file)).run(); }

} // namespace ribkit
