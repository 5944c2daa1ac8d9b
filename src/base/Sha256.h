// SPDX-License-Identifier: GPL-3.0-or-later
//
// SHA-256 (FIPS 180-4), for saying with which definition a result was made and which bytes a log
// had. Not for secrets: it takes no care of timing. Any thread; an object is one thread's at a
// time.
#pragma once

#include "base/Bytes.h"

#include <array>
#include <string>

namespace qor {

/// Of bytes that come piece by piece.
class CSha256 {
  public:
    /// `plain`: without the processor's own instructions for it, where it has some.
    explicit CSha256(bool plain = false);

    void Update(ByteSpan bytes);
    /// Of what has come so far, as 64 lower-case hexadecimal digits; more may come.
    std::string Digits() const;

    static constexpr std::size_t BlockSize = 64;
    using State = std::array<std::uint32_t, 8>;
    /// Mixes whole blocks into the state.
    using MixFunction = void (*)(State& state, ByteSpan blocks);

  private:
    MixFunction Mix;
    State Mixed;
    std::array<std::uint8_t, BlockSize> Begun{}; ///< the block that is not whole yet
    std::uint64_t Length = 0;                    ///< of all that came
};

/// The hash of bytes that are in memory.
std::string Sha256Of(ByteSpan bytes);

} // namespace qor
