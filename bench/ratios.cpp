// SPDX-License-Identifier: GPL-3.0-or-later
//
// Prints the table of ratios: what the program reaches, each figure beside a limit measured in the
// same run. Throughput is that of the real command line as a process of its own.
//   ratios QORVIEW-CLI SOURCE-FOLDER [SCRATCH-FOLDER [MEGABYTES]]
#include "Measure.h"

#include "fakes/CollectingSink.h"
#include "platform/File.h"
#include "session/LogWriter.h"
#include "simulation/FrameMaker.h"
#include "telemetry/FrameSync.h"
#include "telemetry/RawLogFormat.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <random>
#include <sys/resource.h>
#include <sys/wait.h>

namespace qor {
namespace {

struct Setting {
    std::string cli, source, scratch;
    std::uint64_t megabytes = 1000;

    std::string Definition(const char* name) const { return source + "/examples/" + name; }
    std::string Scratch(const char* name) const { return scratch + "/" + name; }
};

bool RunShell(const std::string& command) {
    bool well = std::system(command.c_str()) == 0;
    if (!well)
        std::fprintf(stderr, "ratios: failed: %s\n", command.c_str());
    return well;
}

/// A file of records repeated until it is as large as wanted; returns its size.
std::uint64_t WriteRepeated(const std::string& path, const std::string& head,
                            const std::string& records, std::uint64_t bytes) {
    std::ofstream file(path, std::ios::binary);
    file << head;
    std::uint64_t size = head.size();
    for (; size < bytes; size += records.size())
        file << records;
    return size;
}

/// Frames of a definition, each with a tag when asked for; the counter goes on through whole
/// cycles.
std::string MakeRecords(const CInstrument& instrument, int frames, bool tagged) {
    CFrameMaker maker(instrument, 1);
    FrameTime time;
    time.seconds = 1'750'000'000;
    std::string records;
    for (int i = 0; i < frames; ++i) {
        std::vector<std::uint8_t> frame = maker.Next(static_cast<double>(time.seconds) + 0.1 * i);
        records += AsText(frame);
        if (tagged)
            records += AsText(MakeTimeTag(time));
    }
    return records;
}

std::string HeaderBlock() {
    return std::string(AsText(MakeHeaderRecord(FormatHeaderLine(0, "bench"))));
}

void Replay(const Setting& setting, const CInstrument& radiometer, double copySpeed) {
    std::string log = setting.Scratch("replay.raw");
    std::uint64_t size = WriteRepeated(log, HeaderBlock(), MakeRecords(radiometer, 256 * 40, true),
                                       setting.megabytes * 1'000'000);
    std::string decode = setting.cli + " decode -d " + setting.Definition("radiometer.cal");
    double seconds = MedianSeconds([&] { RunShell(decode + " --format none " + log); });
    PrintRow("replay, calibrate, check (bytes/s)", static_cast<double>(size) / seconds, "B/s",
             copySpeed, "M", 0.10);

    std::uint64_t part =
        WriteRepeated(log, HeaderBlock(), MakeRecords(radiometer, 256 * 40, true), 30'000'000);
    double frames =
        static_cast<double>(part) / (radiometer.FrameSize() + static_cast<double>(TimeTagSize));
    double values = frames * 140.0; // channels, integration time, counter, checksum
    seconds = MedianSeconds([&] { RunShell(decode + " -o /dev/null " + log); });
    std::mt19937_64 random(1);
    std::vector<double> sample(1 << 20);
    for (double& value : sample)
        value = (static_cast<double>(random() % 65536) - 320.123) * 1.2345678e-3 * 0.9876;
    std::vector<char> text(64);
    double conversion = MedianSeconds([&] {
        for (double value : sample)
            std::to_chars(text.data(), text.data() + text.size(), value);
    });
    PrintRow("CSV export (values/s)", values / seconds, "values/s",
             static_cast<double>(sample.size()) / conversion, "to_chars on one core", 16.0 / 26.0);
    const auto toFile = [&](const char* name) {
        const std::string file = setting.Scratch(name);
        const std::string call = decode + " --quiet --overwrite -o " + file + " " + log;
        const double taken = MedianSeconds([&] { RunShell(call); });
        std::filesystem::remove(file);
        return values / taken;
    };
    const double rows = toFile("replay.csv");
    PrintRow("netCDF export (values/s)", toFile("replay.nc"), "values/s", rows, "CSV into a file",
             0.5);
    std::filesystem::remove(log);
}

/// Each twice through the same log; verify once hashes it beside, for a manifest.
void Verify(const Setting& setting, const CInstrument& radiometer) {
    const std::string log = setting.Scratch("verify.raw");
    const std::uint64_t size =
        WriteRepeated(log, HeaderBlock(), MakeRecords(radiometer, 256 * 40, true), 300'000'000);
    const std::string call = " -d " + setting.Definition("radiometer.cal") + " " + log;
    const auto speed = [&](const std::string& command) {
        const std::string quiet = setting.cli + command + call + " > /dev/null 2>&1";
        return static_cast<double>(size) / MedianSeconds([&] { RunShell(quiet); });
    };
    const double info = speed(" info");
    PrintRow("verify (bytes/s)", speed(" verify"), "B/s", info, "info", 1.0);
    RunShell(setting.cli + " verify --repair" + call + " > /dev/null 2>&1");
    PrintRow("verify with a manifest (bytes/s)", speed(" verify"), "B/s", info, "info", 1.0);
    std::filesystem::remove(log);
    std::filesystem::remove(log + ".json");
}

/// Eight logs into eight CSV files, by one job and by two.
void Jobs(const Setting& setting, const CInstrument& radiometer) {
    const std::string first = setting.Scratch("jobs0.raw"), folder = setting.Scratch("jobs");
    const std::uint64_t size =
        WriteRepeated(first, HeaderBlock(), MakeRecords(radiometer, 256 * 40, true), 10'000'000);
    std::vector<std::string> logs{first};
    for (int i = 1; i < 8; ++i) {
        logs.push_back(setting.Scratch(("jobs" + std::to_string(i) + ".raw").c_str()));
        std::filesystem::copy_file(first, logs.back());
    }
    std::string names;
    for (const std::string& log : logs)
        names += " " + log;
    const auto speed = [&](const char* jobs) {
        const std::string call = setting.cli + " decode --quiet --overwrite --format csv -o " +
                                 folder + " -j " + jobs + " -d " +
                                 setting.Definition("radiometer.cal") + names;
        return static_cast<double>(size * logs.size()) /
               MedianSeconds([&] { RunShell(call + " > /dev/null 2>&1"); });
    };
    const double one = speed("1");
    PrintRow("eight logs into CSV, -j 2 (bytes/s)", speed("2"), "B/s", one, "-j 1", 1.7);
    for (const std::string& log : logs)
        std::filesystem::remove(log);
    std::filesystem::remove_all(folder);
}

/// A NMEA decoder as one writes it in C: copy the sentence, check its sum, split it, convert.
double PlainNmeaDecoder(const std::string& text) {
    double sum = 0.0;
    for (std::size_t start = 0; start < text.size();) {
        std::size_t end = text.find('\n', start);
        if (end == std::string::npos)
            break;
        char line[128];
        std::size_t length = std::min(end - start, sizeof line - 1);
        std::memcpy(line, text.data() + start, length);
        line[length] = '\0';
        unsigned check = 0;
        for (char* c = line + 1; *c != '\0' && *c != '*'; ++c)
            check ^= static_cast<unsigned char>(*c);
        char* fields[24];
        int count = 0;
        for (char* field = line; field && count < 24;) {
            fields[count++] = field;
            field = std::strpbrk(field, ",*");
            if (field)
                *field++ = '\0';
        }
        for (int i = 1; i < count; ++i)
            sum += std::strtod(fields[i], nullptr) + check;
        start = end + 1;
    }
    return sum;
}

void TextFrames(const Setting& setting, const CInstrument& gps) {
    std::string records = MakeRecords(gps, 20'000, false);
    std::string capture = setting.Scratch("gps.txt");
    std::uint64_t size = WriteRepeated(capture, {}, records, 200'000'000);
    double seconds = MedianSeconds([&] {
        RunShell(setting.cli + " decode -d " + setting.Definition("gps.tdf") + " --format none " +
                 capture);
    });
    volatile double sink = 0.0;
    double plain = MedianSeconds([&] { sink = PlainNmeaDecoder(records); });
    static_cast<void>(sink);
    PrintRow("delimited text frames (bytes/s)", static_cast<double>(size) / seconds, "B/s",
             static_cast<double>(records.size()) / plain, "a plain C decoder", 4.0);
    std::filesystem::remove(capture);
}

/// Seconds to search junk full of header beginnings with so many candidate headers.
double SearchSeconds(const std::vector<std::uint8_t>& junk, int headers) {
    CCollectingSink sink;
    CFrameSync sync(sink, "bench", StreamSource::ReportingPort);
    for (int i = 0; i < headers; ++i) {
        AttachRequest request;
        request.instrumentName = "QORSEA" + std::to_string(1000 + i);
        request.syncHeader = request.instrumentName;
        request.frameSize = 100;
        if (sync.Attach(request) != CommResult::Success ||
            sync.SetAcquisition(request.instrumentName, true) != CommResult::Success)
            std::exit(1);
    }
    return MedianSeconds([&] {
        constexpr std::size_t piece = 1 << 16;
        for (std::size_t at = 0; at < junk.size(); at += piece) {
            sync.Append(ByteSpan(junk).subspan(at, std::min(piece, junk.size() - at)));
            sync.RunPass();
        }
    });
}

void Growth() {
    std::mt19937_64 random(1);
    std::vector<std::uint8_t> junk(32 << 20);
    constexpr std::string_view shared = "QORSEA";
    for (std::size_t i = 0; i < junk.size();) {
        if (random() % 24 == 0)
            for (std::size_t k = 0, n = 1 + random() % shared.size(); k < n && i < junk.size(); ++k)
                junk[i++] = static_cast<std::uint8_t>(shared[k]);
        else
            junk[i++] = static_cast<std::uint8_t>(random());
    }
    double one = SearchSeconds(junk, 1), size = static_cast<double>(junk.size());
    PrintRow("search, 64 headers (bytes/s)", size / SearchSeconds(junk, 64), "B/s", size / one,
             "1 header", 0.5);
    PrintRow("search, 512 headers (bytes/s)", size / SearchSeconds(junk, 512), "B/s", size / one,
             "1 header", 0.5);
}

void RawLogWriting(const Setting& setting, const CInstrument& radiometer) {
    constexpr int frames = 200'000;
    std::string record = MakeRecords(radiometer, 1, true);
    ByteSpan frame = AsBytes(record).first(record.size() - TimeTagSize);
    ByteSpan tag = AsBytes(record).last(TimeTagSize);
    std::string path = setting.Scratch("write.raw");
    double bare = MedianSeconds([&] {
        CFile file;
        if (file.CreateExclusive(path) != FileCause::None)
            std::exit(1);
        for (int i = 0; i < frames; ++i)
            if (file.Write(AsBytes(record)) != FileCause::None)
                std::exit(1);
    });
    double logged = MedianSeconds([&] {
        CLogWriter writer;
        if (writer.Create(path, true) != FileCause::None)
            std::exit(1);
        LogRecords records;
        for (int i = 0; i < frames; ++i) {
            std::size_t written = 0;
            records.Clear();
            records.Add(1, frame, tag);
            if (writer.Write(records, written) != FileCause::None)
                std::exit(1);
        }
    });
    PrintRow("raw log, one write a frame (frames/s)", frames / logged, "frames/s", frames / bare,
             "bare write()", 0.7);
    PrintRow("  the same against 0.3 M frames/s", frames / logged, "frames/s", 0.3e6,
             "0.3 M frames/s", 1.0);
    std::filesystem::remove(path);
}

void Memory(const Setting& setting, const CInstrument& radiometer) {
    std::string log = setting.Scratch("memory.raw");
    WriteRepeated(log, HeaderBlock(), MakeRecords(radiometer, 256, true), 100'000'000);
    std::string report = setting.Scratch("memory.txt");
    RunShell(
        "/usr/bin/env python3 -c 'import resource,subprocess,sys\nsubprocess.run(sys.argv[2:])\n"
        "open(sys.argv[1],\"w\").write(str(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss))"
        "' " +
        report + " " + setting.cli + " decode -d " + setting.Definition("radiometer.cal") +
        " --format none " + log);
    double kilobytes = 0.0;
    std::ifstream(report) >> kilobytes;
    PrintRow("32 MB over the memory of decode", 32.0, "MB", kilobytes / 1024.0,
             "what decode took (MB)", 1.0);
    std::filesystem::remove(log);
    std::filesystem::remove(report);
}

void Start(const Setting& setting) {
    constexpr int starts = 50;
    auto milliseconds = [&](const std::string& command) {
        return 1000.0 / starts * MedianSeconds([&] {
                   RunShell("i=0; while [ $i -lt " + std::to_string(starts) + " ]; do " + command +
                            " >/dev/null; i=$((i+1)); done");
               });
    };
    double version = milliseconds(setting.cli + " --version");
    PrintRow("5 ms over --version", 5.0, "ms", version, "qorview-cli --version (ms)", 1.0);
    PrintRow("  /bin/true over --version", milliseconds("/bin/true"), "ms", version,
             "qorview-cli --version (ms)", 0.0);
    double load = 1e6 * MedianSeconds(
                            [&] {
                                CInstrument instrument;
                                if (instrument.Load(setting.Definition("radiometer.cal")) !=
                                    DefinitionStatus::Success)
                                    std::exit(1);
                            },
                            101);
    PrintRow("300 us over loading 137 channels", 300.0, "us", load, "a load (us)", 1.0);
}

int Run(const Setting& setting) {
    CInstrument radiometer, gps;
    if (radiometer.Load(setting.Definition("radiometer.cal")) != DefinitionStatus::Success ||
        gps.Load(setting.Definition("gps.tdf")) != DefinitionStatus::Success) {
        std::fprintf(stderr, "ratios: the example definitions could not be loaded\n");
        return 1;
    }
    double copySpeed = MemoryCopySpeed();
    std::printf("M, a large memory copy: %.2f GB/s\n\n", copySpeed / 1e9);
    Replay(setting, radiometer, copySpeed);
    Verify(setting, radiometer);
    Jobs(setting, radiometer);
    TextFrames(setting, gps);
    Growth();
    RawLogWriting(setting, radiometer);
    Memory(setting, radiometer);
    Start(setting);
    return 0;
}

} // namespace
} // namespace qor

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr,
                     "usage: ratios QORVIEW-CLI SOURCE-FOLDER [SCRATCH-FOLDER [MEGABYTES]]\n");
        return 2;
    }
    qor::Setting setting{argv[1], argv[2],
                         argc > 3 ? argv[3] : std::filesystem::temp_directory_path().string()};
    if (argc > 4)
        setting.megabytes = std::strtoull(argv[4], nullptr, 10);
    return qor::Run(setting);
}
