// The qvx-parse command line, run as a subprocess: the cases in cli_cases.json
// (described by its "about" key), then the checks that data cannot express.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "qvx/qvx.h"

extern char** environ;

namespace {

using nlohmann::json;

struct Child {
    pid_t pid;
    int in, out, err;
};

// Starts the tool with its stdin, stdout and stderr on pipes.
Child spawn(const std::vector<std::string>& args) {
    signal(SIGPIPE, SIG_IGN);  // a child that exits early must not kill the test
    int pipes[3][2];           // the child keeps the read end of stdin, the write end of the others
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (int fd = 0; fd < 3; ++fd) {
        if (pipe2(pipes[fd], O_CLOEXEC) != 0) std::abort();
        posix_spawn_file_actions_adddup2(&actions, pipes[fd][fd > 0], fd);
    }
    std::vector<char*> argv{const_cast<char*>(QVX_PARSE_EXE)};
    for (const auto& arg : args) argv.push_back(const_cast<char*>(arg.c_str()));
    argv.push_back(nullptr);
    pid_t pid;
    if (posix_spawn(&pid, QVX_PARSE_EXE, &actions, nullptr, argv.data(), environ) != 0)
        std::abort();
    posix_spawn_file_actions_destroy(&actions);
    for (int fd = 0; fd < 3; ++fd) close(pipes[fd][fd > 0]);
    return {pid, pipes[0][1], pipes[1][0], pipes[2][0]};
}

std::string readAll(int fd) {
    std::string text;
    char buffer[4096];
    for (ssize_t n; (n = read(fd, buffer, sizeof buffer)) > 0;)
        text.append(buffer, static_cast<std::size_t>(n));
    close(fd);
    return text;
}

struct RunResult {
    int exitCode;
    std::string out, err;
};

// Closes the child's stdin, reads its output to the end and waits for its exit.
RunResult finish(const Child& child) {
    close(child.in);
    RunResult r{-1, readAll(child.out), readAll(child.err)};
    int status = 0;
    waitpid(child.pid, &status, 0);
    r.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return r;
}

// Writes all of `input` before reading: inputs and outputs here stay below a pipe's capacity.
RunResult run(const std::vector<std::string>& args, const std::string& input) {
    Child child = spawn(args);
    (void)!write(child.in, input.data(), input.size());  // fails only if the child quit early
    return finish(child);
}

// Parses each line of `text`, which must be compact, valid JSON.
json jsonLines(const std::string& text) {
    EXPECT_TRUE(text.empty() || text.back() == '\n') << text;
    json lines = json::array();
    for (std::size_t start = 0, end; (end = text.find('\n', start)) != text.npos; start = end + 1) {
        const std::string line = text.substr(start, end - start);
        lines.push_back(json::parse(line, nullptr, false));
        EXPECT_EQ(lines.back().dump(), line) << "not a line of compact, valid JSON";
    }
    return lines;
}

// Replaces every string "$name" by defs[name].
json expand(json value, const json& defs) {
    if (value.is_string() && value.get<std::string>().rfind('$', 0) == 0)
        return expand(defs.at(value.get<std::string>().substr(1)), defs);
    if (value.is_structured())
        for (auto& item : value) item = expand(item, defs);
    return value;
}

std::vector<json> loadCases() {
    const json all = json::parse(std::ifstream(QVX_CLI_CASES));
    std::vector<json> cases;
    for (const auto& [group, suite] : all.at("groups").items()) {
        for (const auto& entry : suite.at("cases")) {
            cases.push_back(suite.value("defaults", json::object()));
            cases.back().update(expand(entry, all.at("defs")));
            cases.back()["name"] = group + "_" + entry.at("name").get<std::string>();
        }
    }
    return cases;
}

// Turns the characters U+0000..U+00FF of UTF-8 `text` into single bytes.
std::string latin1(const std::string& text) {
    std::string bytes;
    for (std::size_t i = 0; i < text.size(); i += text[i] & 0x80 ? 2 : 1)
        bytes +=
            text[i] & 0x80 ? static_cast<char>((text[i] & 3) << 6 | (text[i + 1] & 0x3F)) : text[i];
    return bytes;
}

// Checks one stream against `key` (exact text or JSON lines), `key`Contains, or emptiness.
void expectStream(const json& c, const std::string& key, const std::string& text) {
    SCOPED_TRACE(key + ":\n" + text);
    const json want = c.value(key, json("")), parts = c.value(key + "Contains", json::array());
    for (const auto& part : parts.is_string() ? json::array({parts}) : parts)
        EXPECT_NE(text.find(part.get<std::string>()), text.npos) << part;
    if (!c.contains(key + "Contains")) {
        EXPECT_EQ(want.is_string() ? json(text) : jsonLines(text), want);
    }
}

class CliCase : public ::testing::TestWithParam<json> {};

TEST_P(CliCase, Runs) {
    const json& c = GetParam();
    auto args = c.value("args", std::vector<std::string>{});
    const json in = c.value("stdin", json(""));
    std::string input = in.is_string() ? in.get<std::string>() : "";
    for (const auto& line : in.is_array() ? in : json::array())
        input += (line.is_string() ? line.get<std::string>() : line.dump()) + "\n";
    if (c.value("latin1", false)) {
        input = latin1(input);
        std::transform(args.begin(), args.end(), args.begin(), latin1);
    }

    RunResult r = run(args, input);
    EXPECT_EQ(r.exitCode, c.value("exit", 0)) << r.err;
    expectStream(c, "stderr", r.err);
    expectStream(c, "stdout", r.out);
    if (std::count(args.begin(), args.end(), "--batch") +
        std::count(args.begin(), args.end(), "--json"))
        jsonLines(r.out);
}

INSTANTIATE_TEST_SUITE_P(Data, CliCase, ::testing::ValuesIn(loadCases()), [](const auto& info) {
    return info.param.at("name").template get<std::string>();
});

TEST(Batch, AnswersEachLineBeforeTheNextArrives) {
    Child child = spawn({"--batch"});
    const std::string line = "{\"format\":\"vin\",\"data\":\"1HGCM82633A004352\",\"id\":1}\n";
    ASSERT_EQ(write(child.in, line.data(), line.size()), static_cast<ssize_t>(line.size()));
    std::string out;
    char buffer[4096];
    for (pollfd fd{child.out, POLLIN, 0}; out.find('\n') == out.npos;) {
        ASSERT_GT(poll(&fd, 1, 20000), 0) << "no answer while stdin is still open";
        ssize_t n = read(child.out, buffer, sizeof buffer);
        ASSERT_GT(n, 0);
        out.append(buffer, static_cast<std::size_t>(n));
    }
    EXPECT_EQ(json::parse(out)["id"], 1);
    RunResult rest = finish(child);
    EXPECT_EQ(rest.exitCode, 0);
    EXPECT_EQ(rest.out, "");
}

// Follows the format table, so it needs no change when a format gets built.
TEST(Formats, ListedWithAvailabilityAndUnbuiltOnesRefused) {
    std::string listing;
    for (const auto& [format, name] : parser::dataFormatTable()) {
        bool available = qvx::Parser::isFormatAvailable(format);
        listing += name + (available ? "\tavailable\n" : "\tnot built yet\n");
        const json out =
            jsonLines(run({"--batch"}, json{{"format", name}, {"data", "x"}}.dump() + "\n").out);
        EXPECT_EQ(out.at(0).value("inputError", "").find(name) != std::string::npos, !available)
            << out;
    }
    RunResult r = run({"--list-formats"}, "");
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_EQ(r.out, listing);
}

}  // namespace
