// SPDX-License-Identifier: GPL-3.0-or-later
//
// What twenty display windows cost: the processor time of the user-interface thread and the longest
// tick, with sixteen instruments at ten frames a second in real time, beside a bare QCustomPlot
// that is given the same curves and replots them at the same rate.
//   desktop_bench [SECONDS]
//   desktop_bench day [HOURS]   the memory while a day passes as fast as it can; the spectra send a
//                               frame in five minutes, as making them up takes the time
// To be run under a virtual display: xvfb-run -s "-screen 0 1920x1200x24" desktop_bench
#include "Measure.h"

#include "app/Application.h"
#include "app/plots/PlotWidget.h"
#include "app/windows/WindowStore.h"
#include "base/Text.h"
#include "gui/PlayedSession.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <qcustomplot.h>

#include <ctime>
#include <fstream>

#include <unistd.h>

namespace qor {
namespace {

constexpr int Channels = 256, Radiometers = 5, Others = 11;
constexpr double FramesASecond = 10.0, HourOfSeconds = 3600.0;

double ProcessorSeconds() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

std::string Radiometer(int number) {
    std::string text =
        Format("INSTRUMENT RAD%03d '' 6 AS 0 NONE\nRATE 10 'Hz' 0 BU 0 NONE\n", number);
    for (int i = 0; i < Channels; ++i)
        text += Format("ED %.1f 'uW/cm^2/nm' 4 BU 1 OPTIC2\n8500.0 2.0e-07 1.37\n",
                       350.0 + 450.0 * i / Channels);
    return text + "FRAME COUNTER '' 1 BU 0 COUNT\n";
}

std::string Meter(int number) {
    return Format("INSTRUMENT MET%03d '' 6 AS 0 NONE\nRATE 10 'Hz' 0 BU 0 NONE\n"
                  "TEMP WATER 'C' 4 BF 1 POLYU\n0 1\nTILT X 'deg' 4 BF 1 POLYU\n0 1\n"
                  "PRES NONE 'dbar' 4 BF 1 POLYU\n0 1\nFRAME COUNTER '' 1 BU 0 COUNT\n",
                  number);
}

/// The windows, the ticks, and what they took.
class CDesktop {
  public:
    CDesktop(CTheme& theme, QSize size, double spectraASecond) : Theme(theme), Area(theme) {
        Area.resize(size);
        for (int i = 0; i < Others; ++i)
            Session.AddPlayed(Format("MET%03d", i), Meter(i), FramesASecond);
        Session.AddShip();
        (void)Session.Doc.SetRole(InstrumentRole::Profiler, Session.Doc.FindInstrument("MET000"));
        Area.show();
        for (int i = 0; i < Radiometers; ++i)
            Open("time-series", Format("MET%03d", i));
        Open("profile", "MET000");
        Open("gps", "");
        Open("weather", "");
        Open("status", "");
        Open("log", "");
        Open("monitor", "MET001");
        for (int i = 0; i < 4; ++i)
            Open("sensors", Format("MET%03d", 5 + i));
        // An hour of frames, so that the series are as long as they are to be; the spectra have no
        // need of it.
        Session.Play(HourOfSeconds);
        for (int i = 0; i < Radiometers; ++i) {
            Session.AddPlayed(Format("RAD%03d", i), Radiometer(i), spectraASecond);
            Open("spectral", Format("RAD%03d", i));
        }
        Session.Silence(1.0 / FramesASecond);
        Area.TileAll();
    }

    std::size_t Count() const { return Windows.size(); }
    const std::vector<CViewWindow*>& All() const { return Windows; }

    /// Frames of the time that passed, and the windows that are due.
    void Step(double seconds) { Session.Play(seconds); }
    void Tick() {
        ++Ticks;
        for (std::size_t i = 0; i < Windows.size(); ++i)
            Windows[i]->Tick(Ticks + static_cast<unsigned>(i));
    }

    CTheme& Theme;
    CPlayedSession Session;
    CDisplayArea Area;
    /// A second of ticks, painted.
    void ShowSecond() {
        for (int i = 0; i < CViewWindow::TicksASecond; ++i) {
            Tick();
            QCoreApplication::processEvents();
        }
    }

  private:
    void Open(const char* kind, const std::string& instrument) {
        auto* window = OpenWindow(Area, {Theme, Session.Doc}, *FindWindowKind(kind), instrument);
        if (std::string_view(kind) == "time-series")
            (void)window->View().Select(Session.Doc, "1 h");
        window->Refresh();
        Windows.push_back(window);
    }

    std::vector<CViewWindow*> Windows;
    unsigned Ticks = 0;
};

struct Figures {
    std::vector<double> shares; ///< of a core, a second each
    std::vector<double> ticks;  ///< ms, with what was painted after
    std::vector<double> work; ///< the same in processor time: what others on the machine are not in
};

/// Runs `tick` so many times a second for so many seconds; `before` is not counted.
template <class Before, class Tick>
Figures Run(int seconds, int ticksASecond, Before before, Tick tick) {
    Figures figures;
    QElapsedTimer wall;
    wall.start();
    const double period = 1.0 / ticksASecond;
    int done = 0;
    for (int second = 0; second < seconds; ++second) {
        double used = 0.0;
        for (int i = 0; i < ticksASecond; ++i) {
            while (static_cast<double>(wall.nsecsElapsed()) * 1e-9 < period * done) {
                const timespec rest{0, 1'000'000};
                nanosleep(&rest, nullptr);
            }
            ++done;
            before(period);
            QElapsedTimer one;
            one.start();
            const double begin = ProcessorSeconds();
            tick();
            QCoreApplication::processEvents();
            const double spent = ProcessorSeconds() - begin;
            used += spent;
            figures.work.push_back(1000.0 * spent);
            figures.ticks.push_back(static_cast<double>(one.nsecsElapsed()) * 1e-6);
        }
        figures.shares.push_back(100.0 * used);
    }
    return figures;
}

void Print(const char* what, Figures figures) {
    std::sort(figures.ticks.begin(), figures.ticks.end());
    const double work = *std::max_element(figures.work.begin(), figures.work.end());
    std::printf("%-36s %5.1f %% of a core (median); ticks: median %.1f ms, p99 %.1f, longest %.1f "
                "(of processor time %.1f)\n",
                what, Median(figures.shares), Median(figures.ticks),
                figures.ticks[figures.ticks.size() * 99 / 100], figures.ticks.back(), work);
}

double ResidentMegabytes() {
    std::ifstream file("/proc/self/statm");
    long total = 0, resident = 0;
    file >> total >> resident;
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

/// Prints the memory after each hour: windows are shown a second in each minute.
void PlayHours(CDesktop& desktop, int hours) {
    for (int hour = 1; hour <= hours; ++hour) {
        for (int minute = 0; minute < 60; ++minute) {
            desktop.Step(60.0);
            desktop.ShowSecond();
        }
        std::printf("hour %2d: %.1f MB\n", hour, ResidentMegabytes());
        std::fflush(stdout);
    }
}

/// The curves of every plot of the desktop in as many bare plots of the same size.
class CBarePlots {
  public:
    explicit CBarePlots(const CDesktop& desktop) {
        for (CViewWindow* window : desktop.All())
            for (CPlotWidget* plot : window->ShownPlots())
                Add(*plot);
    }
    void Replot() {
        for (const auto& plot : Plots)
            plot->replot();
    }

  private:
    void Add(const CPlotWidget& shown) {
        auto& plot = Plots.emplace_back(std::make_unique<QCustomPlot>());
        plot->resize(shown.size());
        plot->setPlottingHint(QCP::phFastPolylines, true);
        for (const PlotCurve& curve : shown.Page().curves) {
            QCPGraph* graph = plot->addGraph();
            for (const PlotPoint& point : curve.points)
                graph->addData(point.x, point.y);
        }
        plot->rescaleAxes();
        plot->show();
    }
    std::vector<std::unique_ptr<QCustomPlot>> Plots;
};

} // namespace
} // namespace qor

int main(int argc, char** argv) {
    using namespace qor;
    QApplication application(argc, argv);
    CTheme theme;
    PrepareApplication(application, theme);
    const int seconds = argc > 1 ? std::max(std::atoi(argv[1]), 2) : 15;
    const bool day = argc > 1 && std::string_view(argv[1]) == "day";
    CDesktop desktop(theme, {1900, 1150}, day ? 1.0 / 300.0 : FramesASecond);
    // Each window has taken in the hour and has its layout before a tick is counted.
    desktop.ShowSecond();
    if (day) {
        PlayHours(desktop, argc > 2 ? std::max(std::atoi(argv[2]), 1) : 24);
        return 0;
    }
    std::printf("%zu windows, %d instruments at %.0f Hz, %d s each\n", desktop.Count(),
                Radiometers + Others, FramesASecond, seconds);
    const auto step = [&](double period) { desktop.Step(period); };
    Print("all windows in sight",
          Run(seconds, CViewWindow::TicksASecond, step, [&] { desktop.Tick(); }));
    {
        CBarePlots bare(desktop);
        QCoreApplication::processEvents();
        Print("bare QCustomPlot, same curves, 10 Hz",
              Run(seconds, 10, step, [&] { bare.Replot(); }));
    }
    desktop.Area.hide();
    QCoreApplication::processEvents();
    Print("all windows hidden",
          Run(seconds, CViewWindow::TicksASecond, step, [&] { desktop.Tick(); }));
    return 0;
}
