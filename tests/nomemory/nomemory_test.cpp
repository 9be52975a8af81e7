#include "core_filelog.h"
#include "core_globals.h"
#include "core_log.h"
#include "core_reportsettings.h"
#include "core_stacktrace.h"
#include "core_testinterface.h"
#include "core_udp4socket.h"
#include "kern_pollloop.h"
#include "kern_timerinterface.h"
#include "temp_folder.h"
#include "utl_file.h"
#include "utl_fileutils.h"
#include "utl_inireader.h"
#include "utl_iniwriter.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <gmock/gmock.h>
#include <new>

// What becomes of an operation when one of its allocations fails, or all from one on.

namespace {

struct Memory {
    int64_t left = -1;    // allocations before one fails; -1: none fails
    bool forGood = false; // those after it fail, too
    bool failed = false;
};
constinit thread_local Memory memory;

bool takesOne() {
    if (memory.left < 0)
        return true;
    if (memory.left > 0) {
        --memory.left;
        return true;
    }
    memory.failed = true;
    memory.left = memory.forGood ? 0 : -1;
    return false;
}

} // namespace

// Not inline: GCC would see one of the pair without the other.
[[gnu::noinline]] void* operator new(size_t size) {
    void* const block = takesOne() ? std::malloc(size != 0 ? size : 1) : nullptr;
    if (block == nullptr)
        throw std::bad_alloc();
    return block;
}
[[gnu::noinline]] void operator delete(void* block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void* block, size_t) noexcept { std::free(block); }

namespace {

using testing::AnyOf;

constexpr const char* kLongName = "a name that is too long to be kept within a string";

/// Runs `operation` again and again, in which the first allocation fails, then the
/// second, and so on until it needs no more of them; `check` follows each time.
template <typename Operation, typename Check>
void withoutMemory(Operation operation, Check check, bool forGood) {
    for (int64_t allocations = 0;; ++allocations) {
        memory = {.left = allocations, .forGood = forGood};
        operation();
        const bool failed = std::exchange(memory, {}).failed;
        SCOPED_TRACE("allocation " + std::to_string(allocations));
        check();
        if (!failed)
            return;
    }
}

template <typename Operation, typename Check>
void withoutMemory(Operation operation, Check check) {
    withoutMemory(operation, check, false);
    withoutMemory(operation, check, true);
}

/// The lowest number that the runtime has for a file: it grows when one is left open.
int nextHandle(const std::string& path) {
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    const int handle = fileno(file);
    std::fclose(file);
    return handle;
}

TEST(NoMemory, LeavesTheOldFileOrTheNew) {
    const test::TempFolder folder;
    const std::string path = folder / "Settings";
    std::string stored = "first";
    test::writeFile(path, stored);
    const int handle = nextHandle(path);
    bool result = false;
    int number = 0;
    std::string next;
    const auto follow = [&] {
        stored = result ? next : stored;
        EXPECT_EQ(test::readFile(path), stored);
        EXPECT_EQ(nextHandle(path), handle);
        next = kLongName + std::to_string(++number);
    };
    withoutMemory([&] { result = utl::File::createFromMemSafe(path, next.data(), next.size()); },
                  follow);
    EXPECT_TRUE(result);

    const std::string section = kLongName;
    withoutMemory(
        [&] {
            utl::IniWriter writer;
            std::string name, key, value;
            const Memory before = std::exchange(memory, {}); // the caller's own
            name = section, key = section, value = next;
            memory = before;
            writer.addSection(std::move(name));
            writer.add(std::move(key), std::move(value));
            result = writer.save(path);
        },
        [&] {
            next = "[" + section + "]\n" + section + " \"" + next + "\"\n";
            follow();
        });
    EXPECT_TRUE(result);
}

TEST(NoMemory, IsAnswered) {
    const test::WorkingFolder folder;
    const std::string path = kLongName, text = "[" + path + "]\n" + path + "=\"" + path + "\"\n";
    const std::string deep = path + "/" + path, reason = "no such \xff", large(70000, 'x');
    test::writeFile(path, text);
    core::Udp4Socket socket;
    ASSERT_TRUE(socket.open() && socket.bind("127.0.0.1", 0));
    core::StackTrace trace;
    std::string out;
    bool isDir = false;
    const std::function<void()> operations[] = {
        [&] { EXPECT_FALSE(utl::File().openFile(deep, utl::File::kRead)); },
        [&] { EXPECT_FALSE(utl::File().openFile(path, 0)); },
        [&] { EXPECT_FALSE(utl::File::loadIntoMem(path, out, 3)); },
        [&] { EXPECT_FALSE(utl::File::createFromMemSafe(deep, "x", 1)); },
        [&] { EXPECT_FALSE(utl::FileUtils::exists(reason, isDir)); },
        [&] { EXPECT_FALSE(utl::FileUtils::createPath(deep)); },
        [&] { EXPECT_FALSE(utl::FileUtils::createDir(deep)); },
        [&] { EXPECT_FALSE(utl::FileUtils::renameFile(deep, path)); },
        [&] { EXPECT_EQ(utl::FileUtils::createTempFile(deep, path), ""); },
        [&] { std::remove(utl::FileUtils::createTempFile(".", path).c_str()); },
        [&] { EXPECT_FALSE(socket.send(path, 9, text)); },
        [&] { EXPECT_FALSE(socket.send("127.0.0.1", 9, large)); },
        [&] { core::logf(core::kChannelWarn, "%s %s", path, deep); },
        [&] {
            core::logAt(core::kChannelWarn, {"a.cpp", 1}, "f", path.c_str());
        },
        [&] {
            core::logRepeated(path, core::kChannelWarn, path,
                              [] { return std::string(kLongName); });
        },
        [&] { (void)CHECKF(false, path); },
        [&] { GALERT(false, path); },
        [&] { trace.getStackText(); },
        [&] {
            utl::IniReader reader;
            if (reader.load(path) && reader.get(path, path, out)) {
                EXPECT_EQ(out, path);
            }
        },
    };
    for (const auto& operation : operations) {
        operation(); // some open files that they keep
        const int handle = nextHandle(path);
        withoutMemory([&] { EXPECT_NO_THROW(operation()); },
                      [&] { EXPECT_EQ(nextHandle(path), handle); });
    }
}

/// Keeps the latest line without memory of its own.
struct LastLine final : core::LogImpl {
    void write(int32_t, uint32_t, const core::ChannelRecord&, const char* text,
               size_t length) override {
        line[std::string_view(text, length).copy(line, sizeof line - 1)] = '\0';
    }
    inline static char line[100];
};

TEST(NoMemory, LogsTheBareFormatAndKeepsTheImplementation) {
    core::MasterLogger::setImplementation(std::make_unique<LastLine>());
    const std::string name = kLongName;
    withoutMemory(
        [&] { core::logFrom(core::kChannelWarn, "f", "(%s)", name); },
        [&] { EXPECT_THAT(std::string(LastLine::line), AnyOf("(%s)", "f(" + name + ")")); });
    withoutMemory(
        [] {
            try {
                core::MasterLogger::setImplementation(std::make_unique<LastLine>());
            } catch (const std::bad_alloc&) {
                LastLine::line[0] = '\0';
            }
        },
        [] {
            core::logText(core::kChannelInfo, "still there");
            EXPECT_STREQ(LastLine::line, "still there");
        });
    memory = {.left = -1};
    auto globals = std::make_unique<core::DefaultGlobals>();
    memory = {.left = 0, .forGood = true};
    globals.reset();
    memory = {};
    core::MasterLogger::setImplementation(nullptr);
}

TEST(NoMemory, CountsTheLinesThatTheFileLogLost) {
    const test::TempFolder folder;
    const std::string path = folder / "log", text = kLongName;
    core::ChannelRecord record{};
    {
        core::FileLogImpl log({.path = path});
        int32_t calls = 0;
        withoutMemory([&] { log.write(1, 0, record, text.data(), text.size()); }, [&] { ++calls; },
                      true);
        const std::string written = test::readFile(path);
        const auto lines = std::count(written.begin(), written.end(), '\n') - 1;
        EXPECT_THAT(written, testing::HasSubstr(core::format("WARN %d lines", calls - lines)));
        log.write(3, 0, record, text.data(), text.size());
        memory = {.left = 0, .forGood = true};
    }
    memory = {};
    EXPECT_THAT(test::readFile(path), testing::EndsWith(text + "\n")) << "the last one waited";
}

TEST(NoMemory, KeepsReportsUntilTheyAreSentAndAnswersAsAsked) {
    core::TestInterface& tests = core::TestInterface::instance();
    core::Udp4Socket collector;
    ASSERT_TRUE(collector.open(core::SmartSocket::kNonBlocking) && collector.bind("127.0.0.1", 0));
    core::ReportSettings settings;
    settings.sendAddress = "127.0.0.1";
    settings.sendPort = collector.localPort();
    settings.flags = core::ReportSettings::kSend | core::ReportSettings::kAbort;
    tests.setSettings(settings);
    const auto before = tests.reportCount(core::FailureType::Assertion);
    bool aborts = true;
    withoutMemory(
        [&] { aborts = core::failDefault("c", "a_file_with_a_name_of_its_own.cpp", 1, 0, "m"); },
        [&] { EXPECT_TRUE(aborts); });
    const auto failed = tests.reportCount(core::FailureType::Assertion) - before;
    uint64_t received = 0;
    while (const auto report = collector.receive()) {
        if (report->data.find("of_its_own") != std::string::npos) // not of an earlier test
            received += std::stoul(report->data.substr(report->data.find("<count>") + 7));
    }
    EXPECT_EQ(received, failed);
    tests.setSettings({});
}

struct Ticker final : kern::TimerInterface {
    void timerExpired(int64_t) override {
        if (--ticks <= 0)
            loop.stop();
    }
    int ticks = 5;
    kern::PollLoop loop;
};

TEST(NoMemory, LosesNoTimer) {
    withoutMemory(
        [] {
            Ticker ticker;
            const bool started = ticker.startTimer(1) > 0;
            EXPECT_EQ(ticker.activeTimers(), started ? 1 : 0);
            if (started)
                ticker.loop.run();
        },
        [] {}, false);
}

} // namespace
