#include "core_globals.h"

#include "core_assert.h"
#include "core_testinterface.h"

#include <utility>

namespace core {

Globals::Globals(std::unique_ptr<LogImpl> implementation) {
    MasterLogger::setImplementation(std::move(implementation));
    TestInterface::instance().loadIni();
}

Globals::~Globals() {
    Assert::setConsoleHandler();
    MasterLogger::setImplementation(nullptr);
}

DefaultGlobals::DefaultGlobals() : Globals(std::make_unique<DefaultLogImpl>()) {}

} // namespace core
