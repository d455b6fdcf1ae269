#include "mrtd/mrtd_compensator.h"

#include <algorithm>
#include <limits>

#include "common/text.h"

namespace parser {

namespace {

bool allValid(const MrtdChecksums& checksums) {
    return std::all_of(checksums.begin(), checksums.end(),
                       [](const MrtdChecksum& checksum) { return checksum.isValid(); });
}

template <class Transform>
void transformInPlace(std::string& text, ParserStringRef view, std::size_t position,
                      Transform transform) {
    for (std::size_t i = 0; i < view.size(); ++i) {
        text[position + i] = transform(text[position + i]);
    }
}

}  // namespace

std::uint64_t MrtdCompensationCandidate::variantCount() const {
    if (doubtfulAt.size() >= 64) return std::numeric_limits<std::uint64_t>::max();
    return std::uint64_t{1} << doubtfulAt.size();
}

void MrtdCompensationCandidate::writeVariant(std::string& text, std::uint64_t index) const {
    for (std::size_t j = 0; j < doubtfulAt.size(); ++j) {
        const bool letter = j < 64 && ((index >> j) & 1U) != 0;
        text[position + doubtfulAt[j]] = letter ? 'O' : '0';
    }
}

bool MrtdCompensator::tryCandidates(const MrtdChecksums& checksums) {
    std::string& text = *text_;
    if (candidates_.size() == 1) {
        const MrtdCompensationCandidate& only = candidates_.front();
        const std::uint64_t tries = std::min(only.variantCount(), kAttemptBudget);
        for (std::uint64_t i = 0; i < tries; ++i) {
            only.writeVariant(text, i);
            if (allValid(checksums)) return true;
        }
        return false;
    }
    if (candidates_.size() == 2) {
        const MrtdCompensationCandidate& outer = candidates_[0];
        const MrtdCompensationCandidate& inner = candidates_[1];
        std::uint64_t tried = 0;
        for (std::uint64_t i = 0; i < outer.variantCount(); ++i) {
            for (std::uint64_t j = 0; j < inner.variantCount(); ++j) {
                outer.writeVariant(text, i);
                inner.writeVariant(text, j);
                if (allValid(checksums)) return true;
                if (++tried >= kAttemptBudget) return false;
            }
        }
        return false;
    }
    return false;
}

void StandardMrtdCompensator::compensateField(std::size_t position, MrtdFieldClass fieldClass,
                                              ParserStringRef& view) {
    std::string& text = *text_;
    switch (fieldClass) {
        case MrtdFieldClass::Digits:
            transformInPlace(text, view, position, transformLetterToDigit);
            break;
        case MrtdFieldClass::Letters:
            transformInPlace(text, view, position, transformDigitToLetter);
            break;
        case MrtdFieldClass::Any:
            break;
        case MrtdFieldClass::Ambiguous: {
            MrtdCompensationCandidate candidate;
            candidate.position = position;
            for (std::size_t i = 0; i < view.size(); ++i) {
                if (view[i] == '0' || view[i] == 'O') {
                    candidate.doubtfulAt.push_back(static_cast<std::uint8_t>(i));
                }
            }
            candidates_.push_back(std::move(candidate));
            break;
        }
    }
    view = ParserStringRef(text.data() + position, text.data() + position + view.size());
}

}  // namespace parser
