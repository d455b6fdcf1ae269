// Which format is this? Ranks the formats whose structure a code shows, from
// cheap signatures alone (headers, line shapes, lengths, alphabets, leading
// characters, check characters), and parses with the candidates in turn.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "qvx/core/context.h"
#include "qvx/data_format.h"
#include "qvx/parser.h"

namespace qvx {

// How much a matched signature shows, weakest first. Candidates rank by it.
enum class Evidence : int {
    Opening = 1,  // the first bytes fit, little more is known
    Shape = 2,    // length, lines and alphabet fit; no check character confirms it
    Check = 3,    // and the format's check character holds
    Layout = 4,   // a header or line layout that no other format has
};

struct FormatCandidate {
    ParserDataFormat format = ParserDataFormat::Gs1Ai;
    Evidence evidence = Evidence::Opening;
    // One line, in domain terms; static text.
    std::string_view reason;
};

// At most one candidate per format, strongest evidence first; equal evidence
// keeps the order of the signature table. Holds no heap memory.
class FormatCandidates {
  public:
    static constexpr std::size_t kCapacity = 9;

    const FormatCandidate* begin() const noexcept { return items_.data(); }
    const FormatCandidate* end() const noexcept { return items_.data() + count_; }
    std::size_t size() const noexcept { return count_; }
    bool empty() const noexcept { return count_ == 0; }
    const FormatCandidate& operator[](std::size_t i) const noexcept { return items_[i]; }
    bool contains(ParserDataFormat format) const noexcept;

    // Keeps the stronger of two candidates of one format and the ranking order.
    void add(const FormatCandidate& candidate) noexcept;

  private:
    std::array<FormatCandidate, kCapacity> items_{};
    std::size_t count_ = 0;
};

// The formats whose signature the bytes show, ranked. Formats not built yet
// are ranked too. Never fails and never parses.
FormatCandidates detectFormats(std::string_view bytes) noexcept;

// One row of the signature table.
struct FormatSignature {
    ParserDataFormat format;
    Evidence evidence;
    std::string_view reason;
};

// Every signature, in table order, for documentation and review.
const FormatSignature* formatSignaturesBegin() noexcept;
const FormatSignature* formatSignaturesEnd() noexcept;

// The outcome of parsing with the detected candidates.
struct DetectedParse {
    FormatCandidates candidates;
    // The format whose parser gave `outcome`: the first candidate that
    // succeeded, else the top candidate that was parsed. Empty when no
    // candidate could be parsed.
    std::optional<ParserDataFormat> format;
    ParseOutcome outcome;
};

// The parser to try for a format, or null to pass the format over.
using ParserForFormat = std::function<std::shared_ptr<Parser>(ParserDataFormat)>;

// Parses with each candidate in rank order and returns the first success;
// when none succeeds, the fatal issue of the top candidate that was parsed.
DetectedParse parseDetected(const std::string& bytes, const ParserForFormat& parserFor);

// The same with a parser of default options for every candidate this build
// has; formats not built yet are passed over.
DetectedParse parseDetected(const std::string& bytes,
                            const std::shared_ptr<core::Context>& context = nullptr);

}  // namespace qvx
