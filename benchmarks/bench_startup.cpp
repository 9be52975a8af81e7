// The tool's start beside that of a bare QDialog, with OpenGL as Qt loads it by default and
// without, and of a GTK dialog (yad): from the start of the process until the X server has
// seen the first drawing in its window. The processor time until then and the peak memory
// are counters. Each runs as its user starts it; an environment that names no display server
// but X11 is expected.

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

double inSeconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

/// Watches the screen for what is drawn in whose window.
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
        d_processAtom = atom("_NET_WM_PID");
        xcb_flush(d_connection);
    }
    ~Screen() { xcb_disconnect(d_connection); }
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    /// Returns once there is a drawing in a window of the process.
    void waitForDrawing(pid_t process) {
        for (;;) {
            const Event event(xcb_wait_for_event(d_connection), &std::free);
            const int type = event->response_type & 0x7F;
            if (type == XCB_CREATE_NOTIFY) {
                watch(reinterpret_cast<const xcb_create_notify_event_t&>(*event).window);
            } else if (type == d_damageEvent + XCB_DAMAGE_NOTIFY) {
                const auto& drawn = reinterpret_cast<const xcb_damage_notify_event_t&>(*event);
                if (processOf(drawn.drawable) == process)
                    return;
            }
        }
    }

private:
    xcb_atom_t atom(const std::string& name) {
        const auto request =
            xcb_intern_atom(d_connection, 0, static_cast<uint16_t>(name.size()), name.data());
        xcb_intern_atom_reply_t* const reply =
            xcb_intern_atom_reply(d_connection, request, nullptr);
        const xcb_atom_t result = reply->atom;
        std::free(reply);
        return result;
    }

    void watch(xcb_window_t window) {
        xcb_damage_create(d_connection, xcb_generate_id(d_connection), window,
                          XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
        xcb_flush(d_connection);
    }

    pid_t processOf(xcb_window_t window) {
        const auto request =
            xcb_get_property(d_connection, 0, window, d_processAtom, XCB_ATOM_CARDINAL, 0, 1);
        xcb_get_property_reply_t* const reply =
            xcb_get_property_reply(d_connection, request, nullptr);
        if (reply == nullptr)
            return 0;
        const bool given = xcb_get_property_value_length(reply) == sizeof(uint32_t);
        const uint32_t process = given ? *static_cast<uint32_t*>(xcb_get_property_value(reply)) : 0;
        std::free(reply);
        return static_cast<pid_t>(process);
    }

    xcb_connection_t* d_connection;
    uint8_t d_damageEvent;
    xcb_atom_t d_processAtom;
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

void startOnce(benchmark::State& state, const std::vector<std::string>& command) {
    Screen screen;
    double processor = 0;
    double peak = 0;
    for (auto _ : state) {
        const Clock::time_point begin = Clock::now();
        const pid_t process = start(command);
        screen.waitForDrawing(process);
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

void measure(const char* name, std::vector<std::string> command) {
    benchmark::RegisterBenchmark(name,
                                 [command](benchmark::State& state) { startOnce(state, command); })
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(kRuns)
        ->DisplayAggregatesOnly()
        ->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char** argv) {
    const auto folder = std::filesystem::canonical("/proc/self/exe").parent_path();
    const std::string bare = folder / "bare_dialog";
    measure("Start_core", {folder.parent_path() / "configure" / "configure"});
    measure("Start_QDialog", {bare});
    measure("Start_QDialogWithoutOpenGL", {"env", "QT_XCB_GL_INTEGRATION=none", bare});
    const std::string nobody = "BUS_ADDRESS=unix:path=/nonexistent";
    measure("StartWithDeadBuses_core", {"env", "DBUS_SESSION_" + nobody, "AT_SPI_" + nobody,
                                        folder.parent_path() / "configure" / "configure"});
    measure("Start_yad", {"yad", "--form", "--field=NVR IP", "--field=Port"});
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
