// The tool's start, compared with that of a bare QDialog, with OpenGL (Qt's default) and without,
// and of a GTK dialog (yad): from the start of the process until the X server has seen the first
// drawing in its window. The processor time until then and the peak memory are counters. Each runs
// as users start it. Needs an X11 display.
//
//     bench_startup --wine LAUNCHER FOLDER ...    the Windows programs in that folder instead

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <spawn.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>
#include <xcb/damage.h>
#include <xcb/xcb.h>

namespace {

using Clock = std::chrono::steady_clock;
using Event = std::unique_ptr<xcb_generic_event_t, decltype(&std::free)>;

constexpr int kRuns = 30;
constexpr unsigned kPatience = 120; // seconds to wait for a window, then the program ends

double inSeconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

/// Watches the screen for drawings in windows.
class Screen {
public:
    Screen() : d_connection(xcb_connect(nullptr, nullptr)) {
        if (xcb_connection_has_error(d_connection) != 0) {
            std::cerr << "bench_startup: no X server\n";
            std::exit(1);
        }
        d_damageEvent = xcb_get_extension_data(d_connection, &xcb_damage_id)->first_event;
        std::free(xcb_damage_query_version_reply(
            d_connection, xcb_damage_query_version(d_connection, 1, 1), nullptr));
        const uint32_t created = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        const auto* const screen = xcb_setup_roots_iterator(xcb_get_setup(d_connection)).data;
        xcb_change_window_attributes(d_connection, screen->root, XCB_CW_EVENT_MASK, &created);
        xcb_flush(d_connection);
    }
    ~Screen() { xcb_disconnect(d_connection); }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    /// Waits for the first drawing in a window of that class.
    void waitForDrawing(const std::string& name) {
        for (;;) {
            const Event event(xcb_wait_for_event(d_connection), &std::free);
            const int type = event->response_type & 0x7F;
            if (type == XCB_CREATE_NOTIFY) {
                watch(reinterpret_cast<const xcb_create_notify_event_t&>(*event).window);
            } else if (type == d_damageEvent + XCB_DAMAGE_NOTIFY) {
                const auto& drawn = reinterpret_cast<const xcb_damage_notify_event_t&>(*event);
                if (classOf(drawn.drawable) == name)
                    return;
            }
        }
    }

private:
    void watch(xcb_window_t window) {
        xcb_damage_create(d_connection, xcb_generate_id(d_connection), window,
                          XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
        xcb_flush(d_connection);
    }

    std::string classOf(xcb_window_t window) {
        constexpr uint32_t kLongest = 64; // in words of four bytes
        const auto request = xcb_get_property(d_connection, 0, window, XCB_ATOM_WM_CLASS,
                                              XCB_ATOM_STRING, 0, kLongest);
        const std::unique_ptr<xcb_get_property_reply_t, decltype(&std::free)> reply(
            xcb_get_property_reply(d_connection, request, nullptr), &std::free);
        if (reply == nullptr)
            return {};
        const std::string text(static_cast<char*>(xcb_get_property_value(reply.get())),
                               static_cast<size_t>(xcb_get_property_value_length(reply.get())));
        return text.c_str(); // the first of the two strings in it
    }

    xcb_connection_t* d_connection;
    uint8_t d_damageEvent;
};

pid_t start(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    pid_t process = 0;
    if (posix_spawnp(&process, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0) {
        std::cerr << "bench_startup: cannot start " << command[0] << '\n';
        std::exit(1);
    }
    return process;
}

void startOnce(benchmark::State& state, const std::vector<std::string>& command,
               const std::string& windowClass) {
    Screen screen;
    double processor = 0;
    double peak = 0;
    for (auto _ : state) {
        const Clock::time_point begin = Clock::now();
        const pid_t process = start(command);
        alarm(kPatience);
        screen.waitForDrawing(windowClass);
        alarm(0);
        state.SetIterationTime(std::chrono::duration<double>(Clock::now() - begin).count());
        kill(process, SIGKILL);
        struct rusage usage {};
        int status = 0;
        wait4(process, &status, 0, &usage);
        processor += inSeconds(usage.ru_utime) + inSeconds(usage.ru_stime);
        peak = std::max(peak, static_cast<double>(usage.ru_maxrss) * 1024);
    }
    state.counters["processor"] = processor / static_cast<double>(state.iterations());
    state.counters["memory"] = peak;
}

void measure(const char* name, std::vector<std::string> command, std::string windowClass) {
    benchmark::RegisterBenchmark(
        name, [=](benchmark::State& state) { startOnce(state, command, windowClass); })
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(kRuns)
        ->DisplayAggregatesOnly()
        ->Unit(benchmark::kMillisecond);
}

void measureHere() {
    const auto folder = std::filesystem::canonical("/proc/self/exe").parent_path();
    const std::string tool = folder.parent_path() / "configure" / "configure";
    const std::string bare = folder / "bare_dialog";
    const std::string nobody = "BUS_ADDRESS=unix:path=/nonexistent";
    measure("Start_core", {tool}, "configure");
    measure("StartWithDeadBuses_core", {"env", "DBUS_SESSION_" + nobody, "AT_SPI_" + nobody, tool},
            "configure");
    measure("Start_QDialog", {bare}, "bare_dialog");
    measure("Start_QDialogWithoutOpenGL", {"env", "QT_XCB_GL_INTEGRATION=none", bare},
            "bare_dialog");
    measure("Start_yad", {"yad", "--form", "--field=NVR IP", "--field=Port"}, "yad");
}

void measureWindows(const std::string& launcher, const std::string& folder) {
    measure("StartWine_core", {launcher, folder + "/configure.exe"}, "configure.exe");
    measure("StartWine_QDialog", {launcher, folder + "/bare_dialog.exe"}, "bare_dialog.exe");
}

} // namespace

int main(int argc, char** argv) {
    if (argc > 3 && std::string(argv[1]) == "--wine") {
        measureWindows(argv[2], argv[3]);
        std::copy(argv + 4, argv + argc, argv + 1);
        argc -= 3;
    } else {
        measureHere();
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
