// Repair of look-alike characters that a recogniser confuses in a zone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "mrtd/mrtd_parser_helper.h"
#include "qvx/string_ref.h"

namespace parser {

// A field that may hold both letters and digits, where only 0 and O are in
// doubt. Its variants are numbered like a binary counter whose lowest digit is
// the first doubtful character, 0 before O; they are written into the text one
// at a time, never built as a list, so that a long field costs only the tries.
struct MrtdCompensationCandidate {
    std::size_t position = 0;              // offset of the field in the text
    std::vector<std::uint8_t> doubtfulAt;  // offsets of 0 and O inside the field

    std::uint64_t variantCount() const;
    void writeVariant(std::string& text, std::uint64_t index) const;
};

class MrtdCompensator {
  public:
    // Up to this many readings (or pairs of readings) are tried.
    static constexpr std::uint64_t kAttemptBudget = 1025;

    explicit MrtdCompensator(std::string* text) : text_(text) {}
    MrtdCompensator(const MrtdCompensator&) = delete;
    MrtdCompensator& operator=(const MrtdCompensator&) = delete;
    virtual ~MrtdCompensator() = default;

    // Called for every field before its text feeds any check.
    virtual void compensateField(std::size_t position, MrtdFieldClass fieldClass,
                                 ParserStringRef& view) = 0;

    // Tries the readings of the doubtful fields until every check passes. On
    // success the text keeps the winning reading.
    bool tryCandidates(const MrtdChecksums& checksums);
    void reset() { candidates_.clear(); }

    const std::vector<MrtdCompensationCandidate>& candidates() const { return candidates_; }

  protected:
    std::string* text_;
    std::vector<MrtdCompensationCandidate> candidates_;
};

// Leaves the text as read.
class NullMrtdCompensator final : public MrtdCompensator {
  public:
    using MrtdCompensator::MrtdCompensator;
    void compensateField(std::size_t /*position*/, MrtdFieldClass /*fieldClass*/,
                         ParserStringRef& /*view*/) override {}
};

// Fixes look-alikes in fields of one kind outright and collects the 0/O doubts
// of mixed fields for the check digits to decide.
class StandardMrtdCompensator final : public MrtdCompensator {
  public:
    using MrtdCompensator::MrtdCompensator;
    void compensateField(std::size_t position, MrtdFieldClass fieldClass,
                         ParserStringRef& view) override;
};

}  // namespace parser
