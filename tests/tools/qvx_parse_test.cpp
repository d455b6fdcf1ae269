// The qvx-parse command line, run as a subprocess: the --batch and --json
// machine contract, the human-readable mode and --list-formats.
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "qvx/qvx.h"

namespace {

using nlohmann::json;

constexpr const char* kVin = "1HGCM82633A004352";
constexpr const char* kShortMessage = "valid VIN consists of 17 characters";
constexpr const char* kCharsetMessage =
    "valid VIN contains only digits and uppercase letters (except 'Q', 'O', 'I')";

struct RunResult {
    int exitCode = -1;
    std::string out;
    std::string err;
};

struct Child {
    pid_t pid = -1;
    int in = -1;
    int out = -1;
    int err = -1;
};

Child spawn(const std::vector<std::string>& args) {
    signal(SIGPIPE, SIG_IGN);  // a child that exits early must not kill the test
    int in[2], out[2], err[2];
    if (pipe(in) != 0 || pipe(out) != 0 || pipe(err) != 0)
        std::abort();
    pid_t pid = fork();
    if (pid == 0) {
        dup2(in[0], 0);
        dup2(out[1], 1);
        dup2(err[1], 2);
        for (int fd : {in[0], in[1], out[0], out[1], err[0], err[1]})
            close(fd);
        std::vector<char*> argv{const_cast<char*>(QVX_PARSE_EXE)};
        for (const auto& arg : args)
            argv.push_back(const_cast<char*>(arg.c_str()));
        argv.push_back(nullptr);
        execv(QVX_PARSE_EXE, argv.data());
        _exit(127);
    }
    close(in[0]);
    close(out[1]);
    close(err[1]);
    return {pid, in[1], out[0], err[0]};
}

int waitFor(pid_t pid) {
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// Runs the tool with `input` on stdin; feeds and drains all pipes together.
RunResult run(const std::vector<std::string>& args, const std::string& input = "") {
    Child child = spawn(args);
    RunResult result;
    std::size_t written = 0;
    if (input.empty())
        close(child.in), child.in = -1;
    while (child.out >= 0 || child.err >= 0) {
        pollfd fds[3] = {{child.in, POLLOUT, 0}, {child.out, POLLIN, 0}, {child.err, POLLIN, 0}};
        if (poll(fds, 3, -1) < 0)
            continue;
        if (child.in >= 0 && (fds[0].revents & (POLLOUT | POLLERR | POLLHUP))) {
            ssize_t n = write(child.in, input.data() + written, input.size() - written);
            if (n > 0)
                written += static_cast<std::size_t>(n);
            if (n < 0 || written == input.size())
                close(child.in), child.in = -1;
        }
        int* sinks[2] = {&child.out, &child.err};
        std::string* texts[2] = {&result.out, &result.err};
        for (int i = 0; i < 2; ++i) {
            if (*sinks[i] < 0 || !(fds[i + 1].revents & (POLLIN | POLLHUP | POLLERR)))
                continue;
            char buffer[4096];
            ssize_t n = read(*sinks[i], buffer, sizeof buffer);
            if (n > 0) {
                texts[i]->append(buffer, static_cast<std::size_t>(n));
            } else {
                close(*sinks[i]);
                *sinks[i] = -1;
            }
        }
    }
    if (child.in >= 0)
        close(child.in);
    result.exitCode = waitFor(child.pid);
    return result;
}

// Runs --batch on `input` and parses every output line, which must be compact.
std::vector<json> batch(const std::string& input) {
    RunResult r = run({"--batch"}, input);
    EXPECT_EQ(r.exitCode, 0) << r.err;
    EXPECT_TRUE(r.out.empty() || r.out.back() == '\n') << r.out;
    std::vector<json> outputs;
    for (std::size_t start = 0, end; (end = r.out.find('\n', start)) != std::string::npos;
         start = end + 1) {
        std::string line = r.out.substr(start, end - start);
        outputs.push_back(json::parse(line));
        EXPECT_EQ(outputs.back().dump(), line);
    }
    return outputs;
}

json batchOne(const json& line) {
    auto outputs = batch(line.dump() + "\n");
    EXPECT_EQ(outputs.size(), 1u);
    return outputs.empty() ? json() : outputs.front();
}

std::string tempFile(const std::string& bytes) {
    char path[] = "/tmp/qvx_cli_test_XXXXXX";
    int fd = mkstemp(path);
    EXPECT_GE(fd, 0);
    EXPECT_EQ(write(fd, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    close(fd);
    return path;
}

json withId(json out, json id) {
    out["id"] = std::move(id);
    return out;
}

json vinError(const std::string& message) {
    return {{"ok", false},
            {"error", {{"message", message}, {"code", 2}, {"additionalInfo", json::object()}}}};
}

TEST(Batch, SuccessCarriesFieldsAndWarningsOnly) {
    json out = batchOne({{"format", "vin"}, {"data", kVin}});
    EXPECT_EQ(out["ok"], true);
    EXPECT_EQ(out["warnings"], json::array());
    std::vector<std::string> names;
    for (const auto& field : out["fields"])
        names.push_back(field["name"]);
    EXPECT_EQ(names, (std::vector<std::string>{"WMI", "VDS", "VIS", "metadata"}));
    EXPECT_EQ(out["fields"][1],
              (json{{"name", "VDS"}, {"parsed", "CM826"}, {"rawString", "CM826"}}));
    EXPECT_EQ(out.size(), 3u) << out;
}

TEST(Batch, FailuresHaveExactShapes) {
    struct Case {
        json line;
        json expected;
    };
    const json vin = {{"format", "vin"}, {"data", kVin}};
    auto with = [&](json extra) {
        json line = vin;
        line.update(extra);
        return line;
    };
    auto optionsError = [](const char* text) {
        return json{{"ok", false}, {"optionsError", text}};
    };
    const Case cases[] = {
        {{{"format", "vin"}, {"data", "1HGCM"}}, vinError(kShortMessage)},
        {with({{"optionsText", "x"}}), optionsError("Could not parse json string: \"x\"")},
        {with({{"options", json::array()}}),
         optionsError("internal error: JSON options are malformed")},
        {with({{"options", nullptr}}), optionsError("internal error: JSON options are malformed")},
        {with({{"options", {{"x", 1}}}}), optionsError("invalid option: x")},
        {with({{"optionsText", "{\"strictMode\": \"yes\"}"}}),
         optionsError("option 'strictMode' must be a boolean")},
        {with({{"id", {{"a", {1, "b", nullptr}}}}, {"data", "1HGCM"}}),
         withId(vinError(kShortMessage), {{"a", {1, "b", nullptr}}})},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(batchOne(c.line), c.expected) << c.line;
    }
}

TEST(Batch, MalformedLinesGiveInputErrors) {
    struct Case {
        std::string line;
        std::string errorPart;
        json id;  // null: no "id" expected
    };
    const Case cases[] = {
        {"junk", "not valid JSON", nullptr},
        {"[1,2]", "not a JSON object", nullptr},
        {"", "empty line", nullptr},
        {"\r", "empty line", nullptr},
        {R"({"data":"x","id":1})", "missing \"format\"", 1},
        {R"({"format":5,"data":"x"})", "\"format\" must be a string", nullptr},
        {R"({"format":"nope","data":"x","id":"q"})", "unknown format \"nope\"", "q"},
        {R"({"format":"vin","id":[2]})", "missing \"data\" or \"dataBase64\"", {2}},
        {R"({"format":"vin","data":17})", "\"data\" must be a string", nullptr},
        {R"({"format":"vin","data":"a","dataBase64":"YQ=="})", "only one of", nullptr},
        {R"({"format":"vin","dataBase64":1})", "\"dataBase64\" must be a string", nullptr},
        {R"({"format":"vin","data":"a","options":{},"optionsText":"{}"})", "only one of", nullptr},
        {R"({"format":"vin","data":"a","optionsText":{}})", "\"optionsText\" must be a string",
         nullptr},
        {R"({"format":"vin","data":"a","showEvents":"yes"})", "\"showEvents\" must be a boolean",
         nullptr},
    };
    for (const auto& c : cases) {
        auto outputs = batch(c.line + "\n");
        ASSERT_EQ(outputs.size(), 1u) << c.line;
        const json& out = outputs.front();
        EXPECT_EQ(out["ok"], false) << c.line;
        EXPECT_NE(out.value("inputError", "").find(c.errorPart), std::string::npos) << out;
        EXPECT_EQ(out.contains("id"), !c.id.is_null()) << out;
        if (!c.id.is_null()) {
            EXPECT_EQ(out["id"], c.id);
        }
        EXPECT_EQ(out.size(), c.id.is_null() ? 2u : 3u) << out;
    }
}

TEST(Batch, FormatNotBuiltYetIsAnInputError) {
    for (const auto& [format, name] : parser::dataFormatTable()) {
        if (qvx::Parser::isFormatAvailable(format))
            continue;
        json out = batchOne({{"format", name}, {"data", "x"}});
        EXPECT_EQ(out["ok"], false);
        EXPECT_NE(out.value("inputError", "").find(name), std::string::npos) << out;
    }
}

TEST(Batch, Base64DeliversExactBytes) {
    struct Case {
        std::string base64;
        json expected;  // null: an inputError
    };
    const json success = batchOne({{"format", "vin"}, {"data", kVin}});
    const Case cases[] = {
        {"MUhHQ004MjYzM0EwMDQzNTI=", success},
        {"MUhHQ004MjYzM0EwMDQzNTI", success},                     // padding left out
        {"MUhHQ004MjYzM0EwMDQzNQA=", vinError(kCharsetMessage)},  // 16 chars + NUL
        {"/zFIR0NNODI2MzNBMDA0MzU=", vinError(kCharsetMessage)},  // 0xFF + 16 chars
        {"", vinError(kShortMessage)},
        {"MUhHQ004MjYzM0EwMDQzNTI==", nullptr},
        {"MUhHQ004MjYzM0Ew MDQzNTI=", nullptr},
        {"MUhHQ004MjYzM0EwMDQzNTI=\n", nullptr},
        {"MUhHQ004MjYzM0EwMDQzNTJ=", nullptr},  // non-zero filler bits
        {"-_8=", nullptr},
        {"YQ=A", nullptr},
        {"Y===", nullptr},
        {"Y", nullptr},
    };
    for (const auto& c : cases) {
        json out = batchOne({{"format", "vin"}, {"dataBase64", c.base64}});
        if (c.expected.is_null()) {
            EXPECT_TRUE(out.contains("inputError")) << c.base64 << ": " << out;
        } else {
            EXPECT_EQ(out, c.expected) << c.base64;
        }
    }
}

TEST(Batch, InvalidUtf8IsDroppedFromOutput) {
    // The parse error of this line quotes the 0xFF byte; the line stays valid JSON.
    auto outputs = batch("{\"format\":\"vin\",\"data\":\"\xff\"}\n");
    ASSERT_EQ(outputs.size(), 1u);
    EXPECT_TRUE(outputs[0].contains("inputError"));

    RunResult r = run({"--format", "vin", "--json", "--options", "\xff{"}, "");
    EXPECT_EQ(r.exitCode, 2);
    EXPECT_EQ(r.out, R"({"ok":false,"optionsError":"Could not parse json string: \"{\""})"
                     "\n");
}

TEST(Batch, ShowFlagsAddOptionsEventsAndJsonString) {
    const json all = {{"showOptions", true}, {"showEvents", true}, {"showJsonString", true}};
    auto line = [&](json extra) {
        json l = {{"format", "vin"}, {"data", kVin}};
        l.update(all);
        l.update(extra);
        return l;
    };
    auto event = [](bool success, json error, json options) {
        return json::array({{{"id", 15},
                             {"payload",
                              {{"format", "vin"},
                               {"operation", "string"},
                               {"success", success},
                               {"error", error},
                               {"options", options}}}}});
    };
    const json strict = {{"false_positive_compensation", false}, {"strict_mode", true}};

    json ok = batchOne(line({{"options", {{"strictMode", true}}}}));
    EXPECT_EQ(ok["options"], strict);
    EXPECT_EQ(ok["events"], event(true, nullptr, strict));
    EXPECT_EQ(json::parse(ok["jsonString"].get<std::string>()), ok["fields"]);
    EXPECT_NE(ok["jsonString"].get<std::string>().find("\n    {\n        \"name\": \"WMI\""),
              std::string::npos);

    json failed = batchOne(line({{"data", "1HGCM"}}));
    EXPECT_EQ(failed["events"],
              event(false, kShortMessage,
                    {{"false_positive_compensation", false}, {"strict_mode", false}}));
    EXPECT_FALSE(failed.contains("jsonString"));

    // Keys are read in sorted order; the first one sticks before "x" fails.
    json partial = batchOne(line({{"options", {{"falsePositiveCompensation", true}, {"x", 1}}}}));
    EXPECT_EQ(partial,
              (json{{"ok", false},
                    {"optionsError", "invalid option: x"},
                    {"options", {{"false_positive_compensation", true}, {"strict_mode", false}}},
                    {"events", json::array()}}));

    json plain = batchOne({{"format", "vin"}, {"data", kVin}, {"showOptions", false}});
    EXPECT_FALSE(plain.contains("options") || plain.contains("events") ||
                 plain.contains("jsonString"));
}

TEST(Batch, LinesAreAnsweredInOrderAndIndependently) {
    auto line = [](int id, const char* data, const char* extra) {
        return std::string("{\"id\":") + std::to_string(id) + R"(,"format":"vin","data":")" + data +
               R"(","showEvents":true,"showOptions":true)" + extra + "}";
    };
    const std::string input = line(1, kVin, R"(,"options":{"strictMode":true})") + "\r\n" +
                              line(2, "1HGCM", "") + "\n\n" +
                              line(4, kVin, "");  // no final newline
    auto outputs = batch(input);
    ASSERT_EQ(outputs.size(), 4u);
    EXPECT_EQ(outputs[0]["id"], 1);
    EXPECT_EQ(outputs[0]["ok"], true);
    EXPECT_EQ(outputs[1]["id"], 2);
    EXPECT_EQ(outputs[1]["error"]["message"], kShortMessage);
    EXPECT_EQ(outputs[2]["inputError"], "empty line");
    EXPECT_EQ(outputs[3]["id"], 4);
    EXPECT_EQ(outputs[3]["options"]["strict_mode"], false) << "options must not leak between lines";
    for (int i : {0, 1, 3})
        EXPECT_EQ(outputs[i]["events"].size(), 1u) << i;

    EXPECT_EQ(batch(line(1, kVin, "") + "\n").size(), 1u) << "no output for the end of input";
    EXPECT_TRUE(batch("").empty());
}

TEST(Batch, AnswersEachLineBeforeTheNextArrives) {
    Child child = spawn({"--batch"});
    const std::string line = json{{"format", "vin"}, {"data", kVin}, {"id", 1}}.dump() + "\n";
    ASSERT_EQ(write(child.in, line.data(), line.size()), static_cast<ssize_t>(line.size()));
    std::string out;
    while (out.find('\n') == std::string::npos) {
        pollfd fd{child.out, POLLIN, 0};
        ASSERT_GT(poll(&fd, 1, 20000), 0) << "no answer while stdin is still open";
        char buffer[4096];
        ssize_t n = read(child.out, buffer, sizeof buffer);
        ASSERT_GT(n, 0);
        out.append(buffer, static_cast<std::size_t>(n));
    }
    EXPECT_EQ(json::parse(out)["id"], 1);
    close(child.in);
    close(child.out);
    close(child.err);
    EXPECT_EQ(waitFor(child.pid), 0);
}

TEST(JsonMode, ExitCodesAndInputSources) {
    const std::string file = tempFile(kVin);
    const std::string sixteenNewline = std::string(kVin, 16) + "\n";
    const std::string fileNewline = tempFile(sixteenNewline);
    struct Case {
        std::vector<std::string> args;
        std::string input;
        int exitCode;
        json expected;  // null: nothing on stdout
    };
    const json success = batchOne({{"format", "vin"}, {"data", kVin}});
    const Case cases[] = {
        {{"--format", "vin", "--json"}, kVin, 0, success},
        {{"--format", "vin", "--json", "-"}, kVin, 0, success},
        {{"--format", "vin", "--json", file}, "", 0, success},
        {{"--json", "--input", file, "--format=vin"}, "", 0, success},
        // bytes are taken unchanged: the newline stays and fails the charset test
        {{"--format", "vin", "--json"}, sixteenNewline, 1, vinError(kCharsetMessage)},
        {{"--format", "vin", "--json", fileNewline}, "", 1, vinError(kCharsetMessage)},
        {{"--format", "vin", "--json"}, "1HGCM", 1, vinError(kShortMessage)},
        {{"--format", "vin", "--options", "{\"x\":true}", "--json"},
         kVin,
         2,
         {{"ok", false}, {"optionsError", "invalid option: x"}}},
        {{"--format", "vin", "--json", "/nonexistent/qvx"}, "", 2, nullptr},
        {{"--format", "nope", "--json"}, kVin, 2, nullptr},
        {{"--json"}, kVin, 2, nullptr},
        {{"--format", "vin", "--json", file, file}, "", 2, nullptr},
        {{"--format", "vin", "--json", "--escapes"}, kVin, 2, nullptr},
    };
    for (const auto& c : cases) {
        RunResult r = run(c.args, c.input);
        std::string label = ::testing::PrintToString(c.args);
        EXPECT_EQ(r.exitCode, c.exitCode) << label << r.err;
        if (c.expected.is_null()) {
            EXPECT_EQ(r.out, "") << label;
            EXPECT_NE(r.err, "") << label;
        } else {
            EXPECT_EQ(r.out, c.expected.dump() + "\n") << label;
        }
    }
    std::remove(file.c_str());
    std::remove(fileNewline.c_str());
}

TEST(HumanMode, ExitCodesStreamsAndInputText) {
    const std::string sixteen(kVin, 16);
    const std::string file = tempFile(sixteen + "\n");
    struct Case {
        std::vector<std::string> args;
        std::string input;
        int exitCode;
        std::string outPart;  // "": stdout must be empty
        std::string errPart;  // "": stderr must be empty
    };
    const std::string wmi = "WMI\n    raw:    \"1HG\"\n    parsed: {\"fullCode\":\"1HG\"";
    const Case cases[] = {
        {{"--format", "vin", kVin}, "", 0, wmi, ""},
        {{"--format", "vin"}, std::string(kVin) + "\n", 0, wmi, ""},
        {{"--format", "vin", "--input", "-"}, std::string(kVin) + "\r\n", 0, wmi, ""},
        // one line end is stripped from stdin, and only one
        {{"--format", "vin"}, sixteen + "\n", 1, "", kShortMessage},
        {{"--format", "vin"}, sixteen + "\n\n", 1, "", kCharsetMessage},
        // TEXT and FILE are taken as they are
        {{"--format", "vin", "--input", file}, "", 1, "", kCharsetMessage},
        {{"--format", "vin", "--", sixteen + "\n"}, "", 1, "", kCharsetMessage},
        {{"--format", "vin", "--escapes", "\\x31HGCM82633A004352"}, "", 0, wmi, ""},
        {{"--format", "vin", "--escapes", sixteen + "\\x00"}, "", 1, "", kCharsetMessage},
        {{"--format", "vin", "--escapes", sixteen + "\\\\"}, "", 1, "", kCharsetMessage},
        {{"--format", "vin", "--escapes", sixteen + "\\q"}, "", 2, "", "escape"},
        {{"--format", "vin", "--escapes", sixteen + "\\x4"}, "", 2, "", "escape"},
        {{"--format", "vin", "--escapes", sixteen + "\\"}, "", 2, "", "escape"},
        {{"--format", "vin", "--escapes"}, kVin, 2, "", "--escapes"},
        {{"--format", "vin", "--options", "{\"x\":1}", kVin}, "", 2, "", "invalid option: x"},
        {{"--format", "vin", "--input", file, kVin}, "", 2, "", "not both"},
        {{"--format", "nope", kVin}, "", 2, "", "nope"},
        {{kVin}, "", 2, "", "--format"},
        {{"--format", "vin", "--bogus", kVin}, "", 2, "", "unknown option '--bogus'"},
        {{"--format"}, "", 2, "", "needs a value"},
        {{"--help"}, "", 0, "--batch", ""},
        {{"--version"}, "", 0, "qvx-parse ", ""},
    };
    for (const auto& c : cases) {
        RunResult r = run(c.args, c.input);
        std::string label = ::testing::PrintToString(c.args);
        EXPECT_EQ(r.exitCode, c.exitCode) << label << r.err;
        // An empty part means the stream must stay empty.
        auto holds = [](const std::string& text, const std::string& part) {
            return part.empty() ? text.empty() : text.find(part) != std::string::npos;
        };
        EXPECT_TRUE(holds(r.out, c.outPart)) << label << "\nstdout: " << r.out;
        EXPECT_TRUE(holds(r.err, c.errPart)) << label << "\nstderr: " << r.err;
    }
    std::remove(file.c_str());
}

TEST(ListFormats, OneLinePerTableEntryWithAvailability) {
    RunResult r = run({"--list-formats"});
    EXPECT_EQ(r.exitCode, 0);
    std::string expected;
    for (const auto& [format, name] : parser::dataFormatTable()) {
        expected += name + "\t" +
                    (qvx::Parser::isFormatAvailable(format) ? "available" : "not built yet") + "\n";
    }
    EXPECT_EQ(r.out, expected);
    EXPECT_NE(r.out.find("vin\tavailable\n"), std::string::npos);
    EXPECT_EQ(run({"--list-formats", "--format", "vin"}).exitCode, 2);
}

}  // namespace
