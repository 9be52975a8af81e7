// Of this library it includes no more than the checks, as the sources of small modules do.
#include "core_check.h"

#include <cstdlib>
#include <string_view>

namespace {

constexpr core::CheckSite kSite{"some_module.cpp", 7};

/// Fails before and after main, in one child process only.
class Early {
public:
    Early() { fail("early"); }
    ~Early() { fail("late"); }

private:
    static void fail(const char* when) {
        const char* const name = std::getenv("ORVISTRAND_TEST_CHILD");
        if (name != nullptr && name == std::string_view("failsAroundMain"))
            CHECKF_AT(kSite, false, when);
    }
};

[[gnu::init_priority(200)]] const Early early; // ahead of the initialisers of other sources

} // namespace
