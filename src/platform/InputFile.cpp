// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/InputFile.h"

#include <algorithm>
#include <array>
#include <utility>

namespace qor {

namespace {

constexpr std::size_t PieceSize = 1 << 16;
constexpr std::size_t LongestMagic = 4;

/// What a member begins with.
struct Magic {
    std::array<std::uint8_t, LongestMagic> bytes;
    std::size_t size;
    std::uint8_t firstMask; ///< the bits of the first byte that count
    Packing packing;

    /// As far as there are bytes.
    bool Agrees(ByteSpan begin) const {
        for (std::size_t i = 0; i < std::min(size, begin.size()); ++i)
            if ((begin[i] & (i == 0 ? firstMask : 0xff)) != bytes[i])
                return false;
        return true;
    }
};

constexpr Magic Magics[] = {
    {{0x1f, 0x8b, 0x08}, 3, 0xff, Packing::Gzip},
    {{0x28, 0xb5, 0x2f, 0xfd}, 4, 0xff, Packing::Zstd},
    // An index or a size that parallel tools put beside the data; nothing comes out of it.
    {{0x50, 0x2a, 0x4d, 0x18}, 4, 0xf0, Packing::Zstd},
};

Packing PackingOf(ByteSpan bytes) {
    const auto begins = [bytes](const Magic& magic) {
        return bytes.size() >= magic.size && magic.Agrees(bytes);
    };
    const auto* const found = std::ranges::find_if(Magics, begins);
    return found == std::end(Magics) ? Packing::None : found->packing;
}

/// Whether the bytes are too few to tell.
bool CouldBegin(ByteSpan bytes) {
    return std::ranges::any_of(Magics, [bytes](const Magic& magic) {
        return bytes.size() < magic.size && magic.Agrees(bytes);
    });
}

} // namespace

Packing PackingOf(const std::string& path) {
    CFile file;
    std::array<std::uint8_t, LongestMagic> magic{};
    std::size_t got = 0;
    if (IsDevice(path) || file.OpenForReading(path) != FileCause::None ||
        file.Read(magic, got) != FileCause::None)
        return Packing::None;
    return PackingOf(ByteSpan(magic).first(got));
}

CInputFile::CInputFile(CFile file) : File(std::move(file)), Waits(IsDevice(File.Path())) {}

FileCause CInputFile::OpenForReading(const std::string& path) {
    Close();
    const FileCause cause = File.OpenForReading(path);
    Waits = cause == FileCause::None && IsDevice(path);
    return cause;
}

/// Reads on behind what is held.
FileCause CInputFile::Fill(std::size_t& got) {
    Held.erase(Held.begin(), Held.begin() + static_cast<std::ptrdiff_t>(Begin));
    Begin = 0;
    const std::size_t size = Held.size();
    Held.resize(size + PieceSize);
    const FileCause cause = File.Read(std::span(Held).subspan(size), got);
    Held.resize(size + got);
    Taken += got;
    return cause;
}

FileCause CInputFile::Recognise() {
    for (std::size_t got = 1; got > 0 && CouldBegin(Held);)
        if (const FileCause cause = Fill(got); cause != FileCause::None)
            return cause;
    Known = InMember = true;
    switch (PackingOf(ByteSpan(Held))) {
    case Packing::Gzip:
        Unpacker.emplace<CGzipUnpacker>();
        break;
    case Packing::Zstd:
        Unpacker.emplace<CZstdUnpacker>();
        break;
    case Packing::None:
        break;
    }
    return FileCause::None;
}

FileCause CInputFile::Read(std::span<std::uint8_t> room, std::size_t& got) {
    got = 0;
    if (Fault != FileCause::None)
        return Fault;
    if (!Known)
        if (const FileCause cause = Recognise(); cause != FileCause::None)
            return cause;
    FileCause cause = FileCause::None;
    if (!std::holds_alternative<std::monostate>(Unpacker)) {
        cause = ReadUnpacked(room, got);
    } else if (Begin < Held.size()) {
        got = std::min(room.size(), Held.size() - Begin);
        std::copy_n(Held.begin() + static_cast<std::ptrdiff_t>(Begin), got, room.begin());
        Begin += got;
    } else {
        cause = File.Read(room, got);
        Taken += got;
    }
    Made += got;
    if (got == 0 || cause == FileCause::None)
        return cause;
    Fault = cause; // behind what could be read
    return FileCause::None;
}

UnpackStep CInputFile::Unpack(std::span<std::uint8_t> room) {
    const ByteSpan bytes = ByteSpan(Held).subspan(Begin);
    if (auto* gzip = std::get_if<CGzipUnpacker>(&Unpacker))
        return gzip->Unpack(bytes, room);
    return std::get<CZstdUnpacker>(Unpacker).Unpack(bytes, room);
}

/// Gives what there is as soon as there is anything: a pipe may bring the rest much later.
FileCause CInputFile::ReadUnpacked(std::span<std::uint8_t> room, std::size_t& got) {
    while (got == 0) {
        if (!InMember) {
            if (const FileCause cause = BehindMember(); cause != FileCause::None || !InMember)
                return cause;
        }
        const UnpackStep step = Unpack(room);
        Begin += step.taken;
        got = step.made;
        InMember = !step.memberEnded;
        if (step.damaged)
            return FileCause::InvalidFile;
        if (got > 0 || !InMember || step.taken > 0)
            continue;
        std::size_t more = 0;
        if (const FileCause cause = Fill(more); cause != FileCause::None)
            return cause;
        if (more == 0)
            return FileCause::EndOfFile;
    }
    return FileCause::None;
}

/// Another member, padding, the end of the file, or something else.
FileCause CInputFile::BehindMember() {
    for (;;) {
        while (Begin < Held.size() && Held[Begin] == 0)
            ++Begin;
        const ByteSpan rest = ByteSpan(Held).subspan(Begin);
        if (PackingOf(rest) != Packing::None) {
            if (PackingOf(rest) != (Unpacker.index() == 1 ? Packing::Gzip : Packing::Zstd))
                return FileCause::InvalidFile;
            Restart();
            return FileCause::None;
        }
        if (!CouldBegin(rest))
            return FileCause::InvalidFile;
        std::size_t got = 0;
        if (const FileCause cause = Fill(got); cause != FileCause::None)
            return cause;
        if (got == 0)
            return Begin < Held.size() ? FileCause::InvalidFile : FileCause::None;
    }
}

void CInputFile::Restart() {
    InMember = true;
    if (auto* gzip = std::get_if<CGzipUnpacker>(&Unpacker))
        gzip->Restart();
    else if (auto* zstd = std::get_if<CZstdUnpacker>(&Unpacker))
        zstd->Restart();
}

FileCause CInputFile::SeekTo(std::uint64_t position) {
    if (Waits)
        return FileCause::BadSeek;
    if (!Known)
        if (const FileCause cause = Recognise(); cause != FileCause::None)
            return cause;
    const bool packed = !std::holds_alternative<std::monostate>(Unpacker);
    if (packed && position >= Made)
        return SkipTo(position);
    const std::uint64_t place = packed ? 0 : position;
    if (const FileCause cause = File.SeekTo(place); cause != FileCause::None)
        return cause;
    Held.clear();
    Begin = 0;
    Taken = Made = place;
    Fault = FileCause::None;
    Restart();
    return packed ? SkipTo(position) : FileCause::None;
}

FileCause CInputFile::SkipTo(std::uint64_t position) {
    std::vector<std::uint8_t> dropped(PieceSize);
    for (std::size_t got = 1; Made < position && got > 0;) {
        const std::uint64_t left = std::min<std::uint64_t>(position - Made, dropped.size());
        const FileCause cause = Read(std::span(dropped).first(static_cast<std::size_t>(left)), got);
        if (cause != FileCause::None)
            return cause;
    }
    return FileCause::None;
}

} // namespace qor
