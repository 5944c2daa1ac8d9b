// SPDX-License-Identifier: GPL-3.0-or-later
//
// A definition tried on bytes: the definition's text up to a line "--", then the bytes. In pieces
// they give what they give as a whole, and what has no frame has a cause.
#include "Require.h"

#include "instrument/DefinitionReader.h"
#include "session/FrameTrial.h"

#include <algorithm>

namespace {

using namespace qor;

FrameTrialResult Try(const CInstrument& instrument, ByteSpan bytes, std::size_t piece) {
    CFrameTrial trial(instrument);
    for (; !bytes.empty(); bytes = bytes.subspan(std::min(piece, bytes.size())))
        trial.Take(bytes.first(std::min(piece, bytes.size())));
    return trial.Finish();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::string_view Mark = "\n--\n";
    const std::string_view input = AsText({data, size});
    const std::size_t end = std::min(input.find(Mark), size);
    CInstrument instrument;
    CDefinitionReader reader(instrument, "trial.cal");
    reader.Begin("trial.cal");
    reader.Feed(input.substr(0, end));
    if (reader.Finish() != DefinitionStatus::Success)
        return 0;
    const ByteSpan bytes = AsBytes(input.substr(std::min(end + Mark.size(), size)));
    const FrameTrialResult whole = Try(instrument, bytes, size + 1);
    Require(whole.bytes == bytes.size() && whole.discarded <= whole.bytes);
    Require((whole.frames > 0) == whole.first.has_value());
    Require(whole.first.has_value() != whole.nearest.has_value());
    Require(!whole.nearest ||
            !(whole.nearest->cause.empty() || whole.nearest->look.sentence.empty()));
    for (std::size_t piece : {std::size_t{1}, std::size_t{7}}) {
        const FrameTrialResult parts = Try(instrument, bytes, piece);
        Require(parts.frames == whole.frames && parts.discarded == whole.discarded);
        Require(parts.dropped == whole.dropped && parts.unconverted == whole.unconverted);
        Require(!whole.nearest || parts.nearest->cause == whole.nearest->cause);
    }
    return 0;
}
