// Machine-readable zones: document types, the layout of each type's check
// digits, the check-digit arithmetic and the walk that validates a zone.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "qvx/string_ref.h"

namespace parser {

class MrtdCompensator;

// The number is the index into the layout table.
enum class MrtdType : std::uint8_t {
    Td1 = 0,
    Td2 = 1,
    Td2FrenchId = 2,
    Td3 = 3,
    MrvA = 4,
    MrvB = 5,
    SwissDrivingLicense = 6,
    ChinaTravelPermitCR = 7,
    ChinaTravelPermitCF = 8,
    ChinaTravelPermitCT = 9,
    ChinaExitEntryCS = 10,
    ChinaExitEntryCD = 11,
    ChinaOneWayFront = 12,
    ChinaOneWayBack = 13,
    ApecCard = 14,
    VietnamesePassport = 15,
    BorderCrossingCard = 16,
    MexicanConsularCardCG = 17,
    MexicanConsularCardID = 18,
};
constexpr std::size_t kMrtdTypeCount = 19;

// The value of the "documentType" field.
const char* mrtdDocumentTypeName(MrtdType type);

// What a compensator may assume about a field's characters.
enum class MrtdFieldClass : std::uint8_t { Any = 0, Letters = 1, Digits = 2, Ambiguous = 3 };

// How a check digit is read off the document and compared.
enum class MrtdCheckKind : std::uint8_t {
    Plain = 0,
    BlankIsZero = 1,
    OverflowNumber = 2,
    DominicanComposite = 3,
    FixedZero = 4,
    RepeatFiller = 5,
};

struct MrtdLayoutField {
    const char* name;  // the check's name when the field holds a digit
    unsigned width;
    std::array<std::uint8_t, 2> checkGroups;  // checks fed by the text, 0 for none
    MrtdFieldClass fieldClass;
    unsigned ownCheck;  // the check whose digit this is, 0 for none
    MrtdCheckKind checkKind;
};

struct MrtdLayoutLine {
    const MrtdLayoutField* begin = nullptr;
    const MrtdLayoutField* end = nullptr;
};

struct MrtdLayout {
    std::array<MrtdLayoutLine, 3> lines;
    std::size_t lineCount;
    std::size_t checksumCount;
};

// The immutable row of a type; rows of types with one layout are one object.
const MrtdLayout& mrtdLayout(MrtdType type);

// One check digit under computation. Segments are views into the zone's text,
// so a repair written into the text changes what the next computation sees.
class MrtdChecksum {
  public:
    static constexpr std::size_t kMaxSegments = 16;

    // A primary-only segment is left out of the alternate reading.
    void addSegment(ParserStringRef view, bool primaryOnly);
    unsigned computeDigit(bool useAlternate) const;
    // The passed digit matches the primary or, if there is one, the alternate reading.
    bool isValid() const;
    // Back to a fresh record, without touching the segment slots beyond the count.
    void clear() {
        passedDigit = 0;
        fillerRepeats = false;
        count_ = 0;
        hasAlternate_ = false;
    }

    std::uint64_t passedDigit = 0;
    bool fillerRepeats = false;

  private:
    struct Segment {
        ParserStringRef view;
        bool primaryOnly = false;
    };
    std::array<Segment, kMaxSegments> segments_{};
    std::size_t count_ = 0;
    bool hasAlternate_ = false;
};

// The name of each check decided, in order, with its outcome. Names are the
// layout's own literals.
// The check digits of one attempt, held in place: at most seven per layout.
class MrtdChecksums {
  public:
    static constexpr std::size_t kMaxChecks = 7;

    // Fresh records for an attempt with `count` checks.
    void reset(std::size_t count);
    void clear() { count_ = 0; }
    std::size_t size() const { return count_; }
    MrtdChecksum& operator[](std::size_t index);
    const MrtdChecksum* begin() const { return items_.data(); }
    const MrtdChecksum* end() const { return items_.data() + count_; }

  private:
    std::array<MrtdChecksum, kMaxChecks> items_{};
    std::size_t count_ = 0;
};

using MrtdCheckResults = std::vector<std::pair<const char*, bool>>;

// Walks the layout over `lines` (views into `text`), handing every field to the
// compensator and feeding and deciding every check. Returns the message of the
// first failed check, or "" when all passed.
std::string walkMrtdLayout(const MrtdLayout& layout, const std::vector<ParserStringRef>& lines,
                           const std::string& text, MrtdCompensator& compensator,
                           MrtdChecksums& checksums, MrtdCheckResults& checkResults);

}  // namespace parser
