// SPDX-License-Identifier: GPL-3.0-or-later
//
// Its waits are short, so that the event is seen soon.
#include "session/PortSample.h"

#include "base/SilentSink.h"
#include <array>
#include <tuple>

namespace qor {

namespace {

constexpr int WaitMilliseconds = 100;

/// One open port being read.
class CPortReader {
  public:
    CPortReader(CSerialPort& port, PortSample& sample) : Port(port), Sample(sample) {}

    /// What came within a short while, also nothing; false when the port fails.
    bool Read(ByteSpan& bytes) {
        std::size_t got = 0;
        bytes = {};
        if (!Pending) {
            const IssueResult issued = Port.IssueRead(Buffer, got);
            if (issued == IssueResult::Failed)
                return Fail(CommResult::ReadNotIssued, Port.LastError());
            Pending = issued == IssueResult::Pending;
        }
        if (Pending && Port.Wait(WaitMilliseconds) == WaitResult::ReadDone) {
            Pending = false;
            if (const SystemError error = Port.CollectRead(got))
                return Fail(CommResult::ReadNotCollected, error);
        }
        bytes = ByteSpan(Buffer).first(got);
        std::uint32_t errors = 0; // a port that cannot tell them has none
        if (Port.ReadLineErrors(errors) == 0 && (errors & (LineFraming | LineParity)) != 0)
            ++Sample.lineErrors;
        return true;
    }

  private:
    bool Fail(CommResult result, SystemError error) {
        Sample.result = result;
        Sample.error = error;
        return false;
    }

    CSerialPort& Port;
    PortSample& Sample;
    std::array<std::uint8_t, 4096> Buffer{};
    bool Pending = false;
};

} // namespace

PortSample ReadPort(const SerialResourceSettings& settings, const SerialPortFactory& makePort,
                    CClock& clock, int milliseconds, const CEvent& stop,
                    const std::function<bool(ByteSpan)>& take) {
    PortSample sample;
    CSilentSink nobody;
    COpenPort open(nobody, makePort);
    sample.result = open.Open(settings, sample.error);
    if (sample.result != CommResult::Success)
        return sample;
    std::uint32_t before = 0; // errors of the time before
    sample.error = (*open).CreateInput();
    if (sample.error != 0)
        sample.result = CommResult::InputEventNotCreated;
    std::ignore = (*open).ReadLineErrors(before);
    CPortReader reader(*open, sample);
    const std::int64_t end = clock.MonotonicMilliseconds() + milliseconds;
    ByteSpan bytes;
    while (sample.result == CommResult::Success && !stop.IsSet() &&
           clock.MonotonicMilliseconds() < end && reader.Read(bytes))
        if (!bytes.empty() && !take(bytes))
            break;
    std::ignore = open.Close();
    return sample;
}

} // namespace qor
