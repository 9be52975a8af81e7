#include "core_globals.h"

#include "core_assert.h"
#include "core_testinterface.h"

#include <new>
#include <utility>

namespace core {

Globals::Globals(std::unique_ptr<LogImpl> implementation) {
    MasterLogger::setImplementation(std::move(implementation));
    TestInterface::instance().loadIni();
}

Globals::~Globals() {
    Assert::setConsoleHandler();
    try {
        MasterLogger::setImplementation(nullptr);
    } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): it stays until shutdown
    }
}

DefaultGlobals::DefaultGlobals() : Globals(std::make_unique<DefaultLogImpl>()) {}

} // namespace core
