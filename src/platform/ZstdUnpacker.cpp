// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/ZstdUnpacker.h"

#ifdef QORVIEW_ZSTD
#include <zstd.h>
#endif

namespace qor {

#ifdef QORVIEW_ZSTD

struct CZstdUnpacker::Stream {
    ZSTD_DCtx* context = ZSTD_createDCtx();
};

bool CZstdUnpacker::IsThere() {
    return true;
}

void CZstdUnpacker::End::operator()(Stream* stream) const {
    ZSTD_freeDCtx(stream->context);
    delete stream;
}

CZstdUnpacker::CZstdUnpacker() : State(new Stream) {
    constexpr int LargestWindow = 27; // 128 MB, which every common level keeps to
    if (State->context == nullptr)
        State.reset();
    else
        ZSTD_DCtx_setParameter(State->context, ZSTD_d_windowLogMax, LargestWindow);
}

void CZstdUnpacker::Restart() {
    if (State)
        ZSTD_DCtx_reset(State->context, ZSTD_reset_session_only);
}

UnpackStep CZstdUnpacker::Unpack(ByteSpan bytes, std::span<std::uint8_t> room) {
    if (!State)
        return {.damaged = true};
    ZSTD_inBuffer in{bytes.data(), bytes.size(), 0};
    ZSTD_outBuffer out{room.data(), room.size(), 0};
    const std::size_t result = ZSTD_decompressStream(State->context, &out, &in);
    UnpackStep step{in.pos, out.pos};
    step.damaged = ZSTD_isError(result) != 0;
    step.memberEnded = result == 0;
    return step;
}

#else

struct CZstdUnpacker::Stream {};

bool CZstdUnpacker::IsThere() {
    return false;
}

void CZstdUnpacker::End::operator()(Stream* stream) const {
    delete stream;
}

CZstdUnpacker::CZstdUnpacker() = default;

void CZstdUnpacker::Restart() {}

UnpackStep CZstdUnpacker::Unpack(ByteSpan, std::span<std::uint8_t>) {
    UnpackStep step;
    step.damaged = true;
    return step;
}

#endif

} // namespace qor
