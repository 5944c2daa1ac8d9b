// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/GzipUnpacker.h"

#include <zlib.h>

#include <algorithm>
#include <limits>

namespace qor {

namespace {

constexpr int GzipWindow = 15 + 16; // the largest window, and the gzip wrapper alone

unsigned Fitting(std::size_t size) {
    return static_cast<unsigned>(
        std::min<std::size_t>(size, std::numeric_limits<unsigned>::max() / 2));
}

} // namespace

struct CGzipUnpacker::Stream {
    z_stream z{};
};

void CGzipUnpacker::End::operator()(Stream* stream) const {
    inflateEnd(&stream->z); // harmless of one that could not be begun
    delete stream;
}

CGzipUnpacker::CGzipUnpacker() : State(new Stream) {
    if (inflateInit2(&State->z, GzipWindow) != Z_OK)
        State.reset();
}

void CGzipUnpacker::Restart() {
    if (State)
        inflateReset(&State->z);
}

UnpackStep CGzipUnpacker::Unpack(ByteSpan bytes, std::span<std::uint8_t> room) {
    if (!State)
        return {.damaged = true};
    z_stream& z = State->z;
    z.next_in = const_cast<Bytef*>(bytes.data()); // zlib does not write there
    z.avail_in = Fitting(bytes.size());
    z.next_out = room.data();
    z.avail_out = Fitting(room.size());
    const unsigned in = z.avail_in, out = z.avail_out;
    const int result = inflate(&z, Z_NO_FLUSH);
    UnpackStep step{in - z.avail_in, out - z.avail_out};
    step.memberEnded = result == Z_STREAM_END;
    step.damaged = result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR;
    return step;
}

} // namespace qor
