// SPDX-License-Identifier: GPL-3.0-or-later
//
// Live figures over pseudo-terminals: the processor time that `qorview-cli log` takes for many
// ports at full line speed, beside a bare reader of the same bytes, and the time from a frame's
// last byte to its place in the queue.
//   live QORVIEW-CLI SOURCE-FOLDER [PORTS [SECONDS]]
#include "Measure.h"

#include "fakes/CollectingSink.h"
#include "simulation/FrameMaker.h"
#include "telemetry/TelemComm.h"

#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <memory>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <thread>
#include <unistd.h>

namespace qor {
namespace {

constexpr double BytesPerSecond = 11'520.0; // 115,200 baud, 8N1
constexpr int PieceMilliseconds = 10;       // what a USB adapter hands over at once

/// A pseudo-terminal in raw mode; this side plays the instrument.
struct Line {
    int master = -1;
    std::string name;
    std::string definition; ///< path
    std::string frames;     ///< played over and over, 256 of them

    Line() {
        master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
        grantpt(master);
        unlockpt(master);
        name = ptsname(master);
        int slave = open(name.c_str(), O_RDWR | O_NOCTTY);
        termios settings{};
        tcgetattr(slave, &settings);
        cfmakeraw(&settings);
        tcsetattr(slave, TCSANOW, &settings);
        Keep = slave;
    }
    ~Line() {
        close(Keep);
        close(master);
    }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

  private:
    int Keep = -1; ///< so that bytes wait for a reader instead of getting lost
};

void SleepMilliseconds(int milliseconds) {
    poll(nullptr, 0, milliseconds);
}

/// Sends frames on all lines at the line speed, in pieces, for so long; returns the bytes of a
/// line.
std::size_t Play(std::vector<std::unique_ptr<Line>>& lines, double seconds) {
    const std::size_t length = lines.front()->frames.size(), frameLength = length / 256;
    std::size_t sent = 0;
    double elapsed = 0.0;
    auto begin = std::chrono::steady_clock::now();
    while (elapsed < seconds) {
        elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        auto due = static_cast<std::size_t>(elapsed * BytesPerSecond);
        for (std::unique_ptr<Line>& line : lines)
            for (std::size_t at = sent; at < due;) {
                std::size_t place = at % length;
                ssize_t count = write(line->master, line->frames.data() + place,
                                      std::min(due - at, length - place));
                if (count > 0)
                    at += static_cast<std::size_t>(count);
                else
                    SleepMilliseconds(1);
            }
        sent = std::max(sent, due);
        SleepMilliseconds(PieceMilliseconds);
    }
    std::size_t rest = (frameLength - sent % frameLength) % frameLength;
    for (std::unique_ptr<Line>& line : lines) // the last frame is a whole one
        for (std::size_t at = 0; at < rest;) {
            ssize_t count =
                write(line->master, line->frames.data() + sent % length + at, rest - at);
            at += count > 0 ? static_cast<std::size_t>(count) : 0;
        }
    SleepMilliseconds(300);
    return sent + rest;
}

double ChildSeconds(const rusage& usage) {
    auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// Runs a child beside the playing; its processor seconds while the lines were played.
template <class Child>
double ProcessorSeconds(std::vector<std::unique_ptr<Line>>& lines, double seconds,
                        std::size_t& bytes, Child child) {
    pid_t process = fork();
    if (process == 0) {
        child();
        _exit(1);
    }
    SleepMilliseconds(1000);
    bytes = Play(lines, seconds);
    kill(process, SIGINT);
    int status = 0;
    rusage usage{};
    wait4(process, &status, 0, &usage);
    return ChildSeconds(usage);
}

[[noreturn]] void ReadBare(const std::vector<std::unique_ptr<Line>>& lines) {
    std::vector<pollfd> ports;
    for (const std::unique_ptr<Line>& line : lines)
        ports.push_back({open(line->name.c_str(), O_RDONLY | O_NOCTTY | O_NONBLOCK), POLLIN, 0});
    char buffer[4096];
    for (;;) {
        poll(ports.data(), ports.size(), -1);
        for (pollfd& port : ports)
            if (port.revents != 0)
                while (read(port.fd, buffer, sizeof buffer) > 0)
                    ;
    }
}

/// The radiometer with a serial number of its own, for names are unique on a bench.
void GiveInstrument(Line& line, const std::string& definition, const std::filesystem::path& folder,
                    int number) {
    std::ifstream source(definition);
    std::string text((std::istreambuf_iterator<char>(source)), std::istreambuf_iterator<char>());
    char serial[16];
    std::snprintf(serial, sizeof serial, "%04d", number);
    std::size_t place = text.find("0137 ");
    if (place == std::string::npos)
        std::exit(1);
    line.definition = folder / (std::string(serial) + ".cal");
    std::ofstream(line.definition) << text.replace(place, 4, serial);
    CInstrument instrument;
    if (instrument.Load(line.definition) != DefinitionStatus::Success)
        std::exit(1);
    CFrameMaker maker(instrument);
    for (int i = 0; i < 256; ++i)
        line.frames += AsText(maker.Next(i)); // the counter comes round after 256
}

void Ports(const std::string& cli, const std::string& definition, int count, double seconds) {
    std::filesystem::path folder = std::filesystem::temp_directory_path() / "qorview-live";
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    std::vector<std::unique_ptr<Line>> lines;
    for (int i = 0; i < count; ++i)
        GiveInstrument(*lines.emplace_back(std::make_unique<Line>()), definition, folder, 1000 + i);
    std::vector<std::string> words = {cli,      "log",     "--quiet", "-o", folder.string(),
                                      "--name", "live.raw"};
    for (const std::unique_ptr<Line>& line : lines)
        words.insert(words.end(), {"--port", line->name + ":115200", "-d", line->definition});
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);

    std::size_t bytes = 0;
    double bare = ProcessorSeconds(lines, seconds, bytes, [&] {
        signal(SIGINT, SIG_DFL);
        ReadBare(lines);
    });
    double logged = ProcessorSeconds(lines, seconds, bytes, [&] {
        int nowhere = open("/dev/null", O_WRONLY);
        dup2(nowhere, STDOUT_FILENO);
        execv(cli.c_str(), arguments.data());
    });
    std::printf("%d ports at 115,200 baud: %.2f %% of a core; a bare reader %.2f %%: %.2f x\n",
                count, 100.0 * logged / (seconds + 1.3), 100.0 * bare / (seconds + 1.3),
                logged / bare);
    std::uintmax_t size = std::filesystem::file_size(folder / "live.raw");
    constexpr std::uintmax_t record = 337, headerRecord = 128;
    std::uintmax_t frames = bytes / 330 * static_cast<std::size_t>(count), headerRecords = 0;
    while (headerRecords < 40 && (size - headerRecords * headerRecord) % record != 0)
        ++headerRecords;
    std::printf("  frames sent %ju, in the log %ju\n", frames,
                (size - headerRecords * headerRecord) / record);
    std::filesystem::remove_all(folder);
}

/// Microseconds from the write of a frame's last byte to the frame in the queue.
void Latency(const CInstrument& instrument, const std::string& frame, const char* load) {
    CCollectingSink sink;
    CSystemClock clock;
    CProcessCommand commands(clock);
    Line line;
    CTelemComm port(sink, &commands, clock, MakeSystemSerialPort);
    SerialResourceSettings settings;
    settings.portName = line.name;
    AttachRequest request;
    request.instrumentName = request.syncHeader = instrument.SyncHeader();
    request.frameSize = instrument.FrameSize();
    if (port.InitialiseSerial(settings) != CommResult::Success ||
        port.Attach(request) != CommResult::Success ||
        port.EnableAcquisition(instrument.SyncHeader()) != CommResult::Success ||
        port.Connect() != CommResult::Success)
        std::exit(1);
    // The one who looks must not be the one who is late; without the privilege it may be.
    sched_param priority{};
    priority.sched_priority = 1;
    sched_setscheduler(0, SCHED_RR, &priority);
    constexpr int frames = 1000;
    std::vector<double> microseconds;
    CFrameData received;
    for (int i = 0; i < frames; ++i) {
        SleepMilliseconds(3);
        auto begin = std::chrono::steady_clock::now();
        if (write(line.master, frame.data(), frame.size()) != static_cast<ssize_t>(frame.size()))
            std::exit(1);
        for (bool found = false; !found;) {
            constexpr timespec lookAgain{0, 20'000};
            nanosleep(&lookAgain, nullptr);
            if (port.RetrieveFrame(received, found) != CommResult::Success)
                std::exit(1);
        }
        microseconds.push_back(
            1e6 * std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    }
    if (port.Disconnect() != CommResult::Success)
        std::exit(1);
    priority.sched_priority = 0;
    sched_setscheduler(0, SCHED_OTHER, &priority);
    std::sort(microseconds.begin(), microseconds.end());
    std::printf("last byte to frame in the queue, %s: median %.0f us, p99 %.0f us\n", load,
                microseconds[frames / 2], microseconds[frames * 99 / 100]);
}

} // namespace
} // namespace qor

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fprintf(stderr, "usage: live QORVIEW-CLI SOURCE-FOLDER [PORTS [SECONDS]]\n");
        return 2;
    }
    using namespace qor;
    int ports = argc > 3 ? std::atoi(argv[3]) : 32;
    double seconds = argc > 4 ? std::atof(argv[4]) : 10.0;
    std::string definition = std::string(argv[2]) + "/examples/radiometer.cal";
    CInstrument instrument;
    if (instrument.Load(definition) != DefinitionStatus::Success)
        return 1;
    std::vector<std::uint8_t> bytes = CFrameMaker(instrument).Next(0);
    std::string frame(AsText(bytes));
    Ports(argv[1], definition, ports, seconds);
    Latency(instrument, frame, "idle");
    std::vector<pid_t> burners;
    for (int i = 0; i < 2; ++i) {
        pid_t burner = fork();
        if (burner == 0)
            for (volatile unsigned spin = 0;;)
                spin = spin + 1;
        burners.push_back(burner);
    }
    Latency(instrument, frame, "both cores busy");
    for (pid_t burner : burners) {
        kill(burner, SIGKILL);
        waitpid(burner, nullptr, 0);
    }
    return 0;
}
