// SPDX-License-Identifier: GPL-3.0-or-later
//
// The cuts of delimited frames. Frames may hold any byte, NUL included; the header may hold
// delimiter characters, and then the cut falls there, as the definition asks.
#include "instrument/VariableFields.h"

#include <bit>
#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qor {

namespace {

constexpr std::size_t NotFound = static_cast<std::size_t>(-1);

std::size_t Find(ByteSpan frame, char character, std::size_t from) {
    if (from >= frame.size())
        return NotFound;
    const void* found = std::memchr(frame.data() + from, static_cast<unsigned char>(character),
                                    frame.size() - from);
    if (!found)
        return NotFound;
    return static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - frame.data());
}

std::size_t EndOfLast(ByteSpan frame, std::string_view terminator, std::size_t begin) {
    const std::size_t end = terminator.empty() ? NotFound : Find(frame, terminator[0], begin);
    return end == NotFound ? frame.size() : end;
}

constexpr std::size_t Block = 64;

} // namespace

bool CutField(ByteSpan frame, std::string_view delimiters, std::string_view terminator,
              std::size_t k, FieldRange& field) {
    if (k >= delimiters.size())
        return false;
    std::size_t begin = 0;
    for (std::size_t i = 0; i <= k; ++i) {
        const std::size_t cut = Find(frame, delimiters[i], begin);
        if (cut == NotFound)
            return false;
        begin = cut + 1;
    }
    std::size_t end = NotFound;
    if (k + 1 < delimiters.size())
        end = Find(frame, delimiters[k + 1], begin);
    field = {begin, end == NotFound ? EndOfLast(frame, terminator, begin) : end};
    return true;
}

CFieldCutter::CFieldCutter(std::string_view delimiters, std::string_view terminator)
    : Count(delimiters.size()), Wanted(delimiters) {
    Wanted += terminator.substr(0, 1);
    for (auto& pattern : Patterns)
        pattern.fill(Wanted.empty() ? '\0' : Wanted[0]);
    for (char character : Wanted) {
        std::uint8_t& cuts = Cuts[static_cast<std::uint8_t>(character)];
        if (cuts == 0 && Characters < FewCharacters)
            Patterns[Characters].fill(character);
        Characters += cuts == 0 ? 1 : 0;
        cuts = 1;
    }
}

#if defined(__SSE2__)
inline __m128i LoadVector(const void* bytes) {
    return _mm_loadu_si128(static_cast<const __m128i*>(bytes));
}
#endif

/// A bit for each byte of the block that may cut, the first byte's lowest. Fields are so short that
/// looking for the end of each by itself costs more than all else, and no compiler makes the vector
/// comparisons out of the loop below.
std::uint64_t CFieldCutter::Marks(const std::uint8_t* block) const {
    std::uint64_t marks = 0;
#if defined(__SSE2__)
    if (Characters <= FewCharacters) {
        const __m128i patterns[] = {LoadVector(&Patterns[0]), LoadVector(&Patterns[1]),
                                    LoadVector(&Patterns[2]), LoadVector(&Patterns[3])};
        for (std::size_t i = 0; i < Block; i += VectorBytes) {
            const __m128i bytes = LoadVector(block + i);
            __m128i equal = _mm_cmpeq_epi8(bytes, patterns[0]);
            for (std::size_t k = 1; k < FewCharacters; ++k)
                equal = _mm_or_si128(equal, _mm_cmpeq_epi8(bytes, patterns[k]));
            marks |= static_cast<std::uint64_t>(_mm_movemask_epi8(equal)) << i;
        }
        return marks;
    }
#endif
    for (std::size_t i = 0; i < Block; ++i)
        marks |= std::uint64_t{Cuts[block[i]]} << i;
    return marks;
}

/// The marks of the block that begins at `start`, none behind the frame's end.
std::uint64_t CFieldCutter::MarksAt(ByteSpan frame, std::size_t start) const {
    const std::size_t size = frame.size() - start;
    if (size >= Block)
        return Marks(frame.data() + start);
    if (frame.size() >= Block) // the frame's last block, without what was seen before
        return Marks(frame.data() + frame.size() - Block) >> (Block - size);
    std::uint8_t padded[Block] = {};
    std::memcpy(padded, frame.data(), size);
    return Marks(padded) & (~std::uint64_t{0} >> (Block - size));
}

std::size_t CFieldCutter::Cut(ByteSpan frame, std::size_t* cuts) const {
    const char* const wanted = Wanted.data();
    const std::size_t end = Wanted.size();
    std::size_t count = 0;
    for (std::size_t start = 0; start < frame.size() && count < end; start += Block) {
        std::uint64_t marks = MarksAt(frame, start);
        for (; marks != 0 && count < end; marks &= marks - 1) {
            const auto at = start + static_cast<unsigned>(std::countr_zero(marks));
            // A branch, which is nearly always taken alike: a sum would make each turn wait for the
            // comparison of the one before.
            if (frame[at] == static_cast<std::uint8_t>(wanted[count]))
                cuts[count++] = at;
        }
    }
    if (count > Count)
        return Count;
    if (count > 0) // not all that was wanted: the last field runs on
        cuts[count] = EndOfLast(frame, std::string_view(Wanted).substr(Count), cuts[count - 1] + 1);
    return count;
}

} // namespace qor
