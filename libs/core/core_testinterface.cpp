#include "core_testinterface.h"

#include "core_assertexclude.h"

#include <memory>

namespace core {

struct TestInterface::Loaded {
    Settings settings;
    AssertExclude exclusions;
};

TestInterface& TestInterface::instance() {
    static constinit TestInterface theInstance;
    return theInstance;
}

const TestInterface::Loaded* TestInterface::loaded() {
    // Nobody waits for the reading thread: it may be waiting for the log's lock, under
    // which the waiting thread's check may have failed.
    if (!d_loadStarted.load(std::memory_order_relaxed) && !d_loadStarted.exchange(true)) {
        auto fresh = std::make_unique<Loaded>();
        fresh->exclusions.load();
        d_loaded.store(fresh.release(), std::memory_order_release);
    }
    return d_loaded.load(std::memory_order_acquire);
}

TestInterface::Settings TestInterface::settings() {
    const Loaded* current = loaded();
    return current != nullptr ? current->settings : Settings{};
}

bool TestInterface::isExcluded(const char* file, int32_t line) {
    const Loaded* current = loaded();
    return current != nullptr && current->exclusions.contains(file, line);
}

void TestInterface::report(ReportType type, const char*, const char*, int32_t, int32_t,
                           const std::string&) {
    d_reportCounts[static_cast<size_t>(type)].fetch_add(1, std::memory_order_relaxed);
}

uint64_t TestInterface::reportCount(ReportType type) const {
    return d_reportCounts[static_cast<size_t>(type)].load(std::memory_order_relaxed);
}

bool TestInterface::abortsOn(ReportType type) {
    const Loaded* current = loaded();
    const uint32_t bit = type == ReportType::Assertion ? kAbortOnAssertion : kAbortOnAlert;
    return current != nullptr && (current->settings.flags & bit) != 0;
}

} // namespace core
