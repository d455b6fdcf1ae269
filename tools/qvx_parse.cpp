// qvx-parse: the command line of the library. Parses one input readably
// (default), as one JSON line (--json), or a stream of JSON Lines (--batch).
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "detected_request.h"
#include "human_output.h"
#include "qvx/qvx.h"
#include "request.h"
#include "text_io.h"

namespace {

using qvx_cli::Request;

constexpr int kExitOk = 0;
constexpr int kExitParseFailed = 1;
constexpr int kExitIoFailure = 1;
constexpr int kExitUsage = 2;

constexpr const char* kSynopsis = R"(Usage:
  qvx-parse --format NAME [--options JSON] [--escapes] [TEXT | --input FILE]
  qvx-parse --format NAME [--options JSON] --json [FILE | --input FILE]
  qvx-parse (--parser-json JSON | --parser-file FILE) [--json] ...
  qvx-parse --batch
  qvx-parse --list-formats | --help | --version
)";

constexpr const char* kDetails = R"(
Turns the decoded contents of a scanned code into named fields.

Modes:
  (default)        Parse TEXT, the bytes of FILE, or standard input, and print
                   each field: name, raw text (control bytes escaped), parsed
                   value (compact JSON) and issues, then the warnings.
                   Input read from standard input loses ONE trailing "\n" or
                   "\r\n", which shells and echo add; TEXT and FILE are taken
                   exactly as they are. Exit 0 on success, 1 when the parse
                   fails (the reason goes to standard error), 2 on a usage or
                   option error.
  --json           Parse all bytes of FILE (standard input when absent or
                   "-"), unchanged, and print one JSON line shaped like a
                   --batch output line. Exit 0 on success, 1 when the parse
                   fails, 2 on an option error (the JSON line is printed too)
                   or a usage error.
  --batch          Read JSON Lines from standard input and write one compact
                   JSON line per input line, in order (see below). Exit 0
                   unless reading or writing fails.
  --list-formats   Print each format name, a tab, and "available" or
                   "not built yet".

Options:
  --format NAME    The format to expect (see --list-formats), or "auto": the
                   formats whose structure the input shows are tried in rank
                   order and the first that parses is taken (when none does,
                   the top one's failure is reported). The chosen format is
                   printed first, or as "format" in the JSON line. Options go
                   to every candidate; one that refuses them is passed over.
  --show-candidates
                   Also print the detected formats, ranked, with the reason
                   of each ("candidates" in the JSON line).
  --options JSON   Parser options, the text of a JSON object handed to the
                   parser as it is, e.g. '{"strictMode":true}'.
  --parser-json JSON
                   Instead of --format and --options: the parser's JSON
                   description, e.g. '{"type":"parser","dataFormat":"vin",
                   "options":{"strictMode":true}}'. A refused description
                   exits 2 (with --json, after printing "deserializerError");
                   description keys that were not used are warned about on
                   standard error.
  --parser-file FILE
                   As --parser-json, with the description read from FILE.
  --input FILE     Read the input from FILE ("-" for standard input).
  --escapes        Interpret \xHH, \n, \r, \t and \\ in TEXT; any other
                   backslash sequence is a usage error.
  -h, --help       Print this help.
  --version        Print the version.
  --               End of options; what follows is TEXT or FILE.

Batch input: one JSON object per line (a trailing "\r" is ignored).
  "format"          format name (required)
  "data"            the input: the UTF-8 bytes of this string, or
  "dataBase64"      the input bytes in standard base64 ("=" padding optional)
  "options"         options: this JSON value, printed compactly, or
  "optionsText"     options: this string, verbatim (absent: defaults)
  "id"              any JSON value, echoed as "id"
  "showOptions"     true: add "options", the parser's options (snake_case)
  "showEvents"      true: add "events", the usage events of the parse
  "showJsonString"  true: add "jsonString", the stored JSON text of a result
  "parser"          instead of "format" and "options": the parser's JSON
                    description, printed compactly, or
  "parserText"      the description as this string, verbatim
  "update"          with a description: a second description applied to the
  "updateText"      parser before the parse (a JSON value, or a string)
  "showComponentId" true: add "componentId", the parser's component id
  "showDeserializerWarnings"
                    true: add "deserializerWarnings", the unused keys of the
                    last description applied
  "showCandidates"  true: add "candidates", the detected formats, ranked, as
                    {"format", "reason"}; with "format": "auto" the output
                    always has "format", the chosen name (null when no format
                    was recognised)
Batch output: one compact JSON object per line, always with "ok".
  success           "ok": true, "fields", "warnings"
  parse failure     "ok": false, "error": {"message", "code", "additionalInfo"}
  option failure    "ok": false, "optionsError" (no parse is run)
  refused description "ok": false, "deserializerError" (no parse is run)
  malformed line    "ok": false, "inputError"
Bytes that are not valid UTF-8 are dropped from output strings.
)";

struct Args {
    bool batch = false;
    bool json = false;
    bool escapes = false;
    bool listFormats = false;
    bool help = false;
    bool version = false;
    bool showCandidates = false;
    std::optional<std::string> format;
    std::optional<std::string> options;
    std::optional<std::string> input;
    std::optional<std::string> parserJson;
    std::optional<std::string> parserFile;
    std::vector<std::string> positionals;
    // Count of arguments other than the mode flags, for the modes that take none.
    int otherArguments = 0;
};

int usageError(const std::string& message) {
    std::cerr << "qvx-parse: " << message << "\n"
              << kSynopsis << "Run 'qvx-parse --help' for more.\n";
    return kExitUsage;
}

int runtimeError(const std::string& message) {
    std::cerr << "qvx-parse: " << message << '\n';
    return kExitUsage;
}

// Reads argv into `args`; returns an error text for an unknown or malformed argument.
std::optional<std::string> parseArgs(int argc, char** argv, Args& args) {
    bool onlyPositionals = false;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        if (onlyPositionals || arg == "-" || arg.empty() || arg[0] != '-') {
            args.positionals.push_back(arg);
            ++args.otherArguments;
            continue;
        }
        if (arg == "--") {
            onlyPositionals = true;
            continue;
        }
        std::string name = arg;
        std::optional<std::string> inlineValue;
        if (auto eq = arg.find('='); arg.rfind("--", 0) == 0 && eq != std::string::npos) {
            name = arg.substr(0, eq);
            inlineValue = arg.substr(eq + 1);
        }
        std::optional<std::string>* slot = nullptr;
        if (name == "--format") slot = &args.format;
        if (name == "--options") slot = &args.options;
        if (name == "--input") slot = &args.input;
        if (name == "--parser-json") slot = &args.parserJson;
        if (name == "--parser-file") slot = &args.parserFile;
        if (slot != nullptr) {
            if (*slot) return "'" + name + "' is given twice";
            if (inlineValue) {
                *slot = *inlineValue;
            } else if (i + 1 < argc) {
                *slot = std::string(argv[++i]);
            } else {
                return "'" + name + "' needs a value";
            }
            ++args.otherArguments;
            continue;
        }
        if (inlineValue) return "'" + name + "' takes no value";
        if (arg == "--batch") {
            args.batch = true;
        } else if (arg == "--json") {
            args.json = true;
        } else if (arg == "--escapes") {
            args.escapes = true;
            ++args.otherArguments;
        } else if (arg == "--show-candidates") {
            args.showCandidates = true;
            ++args.otherArguments;
        } else if (arg == "--list-formats") {
            args.listFormats = true;
        } else if (arg == "-h" || arg == "--help") {
            args.help = true;
        } else if (arg == "--version") {
            args.version = true;
        } else {
            return "unknown option '" + arg + "'";
        }
    }
    return std::nullopt;
}

int listFormats() {
    for (const auto& [format, name] : parser::dataFormatTable()) {
        std::cout << name << '\t'
                  << (qvx::Parser::isFormatAvailable(format) ? "available" : "not built yet")
                  << '\n';
    }
    std::cout.flush();
    return std::cout ? kExitOk : kExitIoFailure;
}

bool writeAll(int fd, const std::string& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR) continue;
        if (n <= 0) return false;
        done += static_cast<std::size_t>(n);
    }
    return true;
}

// Answers are written whenever no complete line is left to answer, that is
// before every read that may wait: a driver that sends one line and waits
// gets its answer at once, and a stream of lines costs one write per chunk
// read instead of one per line.
int runBatch() {
    constexpr std::size_t kChunk = 1 << 16;
    qvx_cli::BatchRunner runner;
    std::string input;
    std::string output;
    std::size_t start = 0;
    // Where the search for the next line end goes on: a long line read in
    // many chunks is scanned once, not once per chunk.
    std::size_t searchFrom = 0;
    bool atEnd = false;
    while (!atEnd) {
        for (std::size_t end; (end = input.find('\n', searchFrom)) != std::string::npos;
             start = searchFrom = end + 1) {
            runner.handleLine(std::string_view(input).substr(start, end - start), output);
            output += '\n';
        }
        if (!writeAll(STDOUT_FILENO, output)) {
            std::cerr << "qvx-parse: cannot write to standard output\n";
            return kExitIoFailure;
        }
        output.clear();
        input.erase(0, start);
        start = 0;
        const std::size_t kept = input.size();
        searchFrom = kept;
        input.resize(kept + kChunk);
        ssize_t n;
        do {
            n = ::read(STDIN_FILENO, input.data() + kept, kChunk);
        } while (n < 0 && errno == EINTR);
        if (n < 0) {
            std::cerr << "qvx-parse: cannot read standard input\n";
            return kExitIoFailure;
        }
        input.resize(kept + static_cast<std::size_t>(n));
        atEnd = n == 0;
    }
    // A last line without a line end is still a line.
    if (!input.empty()) {
        runner.handleLine(input, output);
        output += '\n';
        if (!writeAll(STDOUT_FILENO, output)) {
            std::cerr << "qvx-parse: cannot write to standard output\n";
            return kExitIoFailure;
        }
    }
    return kExitOk;
}

// Reads the input of the --json and human modes into `data`; returns an error
// text on failure. `path` absent or "-" means standard input.
std::optional<std::string> readInput(const std::optional<std::string>& path, bool human,
                                     std::string& data) {
    if (!path || *path == "-") {
        auto bytes = qvx_cli::readAll(stdin);
        if (!bytes) return std::string("cannot read standard input");
        data = std::move(*bytes);
        if (human) qvx_cli::stripOneLineEnd(data);
        return std::nullopt;
    }
    std::string why;
    auto bytes = qvx_cli::readFile(*path, why);
    if (!bytes) return "cannot read '" + *path + "': " + why;
    data = std::move(*bytes);
    return std::nullopt;
}

// Makes the parser of --parser-json or --parser-file before any input is read.
// Returns an exit code when there is nothing left to do.
std::optional<int> prepareDescribed(const Args& args, Request& request,
                                    std::optional<qvx_cli::PreparedParser>& prepared) {
    if (args.parserFile) {
        std::string why;
        auto text = qvx_cli::readFile(*args.parserFile, why);
        if (!text) return runtimeError("cannot read '" + *args.parserFile + "': " + why);
        request.parserText = std::move(*text);
    } else {
        request.parserText = args.parserJson;
    }
    auto made = qvx_cli::prepareParser(request, nullptr);
    if (!made) return runtimeError(made.error());
    prepared = std::move(made).value();
    for (const auto& warning : prepared->deserializerWarnings) {
        std::cerr << "qvx-parse: warning: " << warning << '\n';
    }
    if (!prepared->deserializerError) return std::nullopt;
    if (!args.json) return runtimeError(*prepared->deserializerError);
    std::string line;
    qvx_cli::appendResponseText(line, request, qvx_cli::respond(request, *prepared), nullptr);
    std::cout << line << '\n';
    std::cout.flush();
    if (!std::cout) return runtimeError("cannot write to standard output");
    return kExitUsage;
}

int runSingle(const Args& args) {
    const bool described = args.parserJson || args.parserFile;
    if (args.parserJson && args.parserFile) {
        return usageError("give '--parser-json' or '--parser-file', not both");
    }
    if (described && (args.format || args.options)) {
        return usageError("a parser description replaces '--format' and '--options'");
    }
    if (!described && !args.format) return usageError("'--format' is missing");
    if (args.positionals.size() > 1) return usageError("too many arguments");
    if (!args.positionals.empty() && args.input) {
        return usageError(args.json ? "give FILE or '--input', not both"
                                    : "give TEXT or '--input', not both");
    }
    if (args.escapes && (args.json || args.positionals.empty())) {
        return usageError("'--escapes' applies only to TEXT in the default mode");
    }

    Request request;
    request.showCandidates = args.showCandidates;
    std::optional<qvx_cli::PreparedParser> prepared;
    if (described) {
        if (auto exit = prepareDescribed(args, request, prepared)) return *exit;
    } else {
        request.autoFormat = *args.format == qvx_cli::kAutoFormat;
        auto format = parser::dataFormatFromName(*args.format);
        if (!format && !request.autoFormat) {
            return runtimeError("unknown format '" + *args.format + "' (see --list-formats)");
        }
        if (format && !qvx::Parser::isFormatAvailable(*format)) {
            // Checked before reading any input; the library words the reason.
            auto created = qvx::Parser::create(nullptr, *format);
            return runtimeError(created ? "the format '" + *args.format + "' is not available"
                                        : created.error());
        }
        if (format) request.format = *format;
        request.optionsText = args.options;
    }

    if (!args.json && !args.positionals.empty()) {
        request.data = args.positionals.front();
        if (args.escapes) {
            std::string why;
            auto text = qvx_cli::unescape(request.data, why);
            if (!text) return usageError("bad escape in TEXT: " + why);
            request.data = std::move(*text);
        }
    } else {
        std::optional<std::string> path = args.input;
        if (!path && !args.positionals.empty()) path = args.positionals.front();
        if (auto error = readInput(path, !args.json, request.data)) return runtimeError(*error);
    }

    auto run = prepared ? bar::result<qvx_cli::Response, std::string>::success(
                              qvx_cli::respond(request, *prepared))
                        : qvx_cli::runRequest(request);
    if (!run) return runtimeError(run.error());
    const auto& response = run.value();

    if (args.json) {
        std::string line;
        qvx_cli::appendResponseText(line, request, response, nullptr);
        std::cout << line << '\n';
        std::cout.flush();
        if (!std::cout) return runtimeError("cannot write to standard output");
        if (response.optionsError) return kExitUsage;
        return response.parse->ok() ? kExitOk : kExitParseFailed;
    }

    qvx_cli::printDetection(std::cout, response, args.showCandidates);
    if (response.optionsError) return runtimeError(*response.optionsError);
    if (!response.parse->ok()) {
        qvx_cli::printIssue(std::cerr, *response.parse->error());
        return kExitParseFailed;
    }
    qvx_cli::printParsedData(std::cout, *response.parse->value());
    std::cout.flush();
    if (!std::cout) return runtimeError("cannot write to standard output");
    return kExitOk;
}

}  // namespace

int main(int argc, char** argv) {
    Args args;
    if (auto error = parseArgs(argc, argv, args)) return usageError(*error);
    if (args.help) {
        std::cout << kSynopsis << kDetails;
        return kExitOk;
    }
    if (args.version) {
        std::cout << "qvx-parse " << QVX_VERSION << '\n';
        return kExitOk;
    }
    int modes = int(args.batch) + int(args.json) + int(args.listFormats);
    if (modes > 1) return usageError("choose one of '--batch', '--json' and '--list-formats'");
    if (args.listFormats || args.batch) {
        if (args.otherArguments > 0) {
            return usageError(std::string("'") + (args.batch ? "--batch" : "--list-formats") +
                              "' takes no other arguments");
        }
        return args.listFormats ? listFormats() : runBatch();
    }
    return runSingle(args);
}
