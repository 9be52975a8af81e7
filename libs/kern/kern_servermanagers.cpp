#include "kern_servermanagers.h"

#include "core_check.h"

namespace kern {
namespace {

constexpr core::CheckSite kForeignTimerManager{"kern_servermanagers.cpp", 38};
constexpr core::CheckSite kForeignDescriptorManager{"kern_servermanagers.cpp", 91};

constinit thread_local ThreadState state{nullptr, nullptr, 0, 0, 0};

} // namespace

ThreadState& threadState() { return state; }

TimerManager::TimerManager() { threadState().timerManager = this; }

TimerManager::~TimerManager() {
    TimerManager*& installed = threadState().timerManager;
    if (CHECKF_AT(kForeignTimerManager, installed == this))
        installed = nullptr;
}

void TimerManager::setLabel(const char*) {}

void TimerManager::setSlack(TimerInterface*, uint32_t) {}

int32_t TimerManager::runningTimers(const TimerInterface*) const { return -1; }

DescriptorManager::DescriptorManager() { threadState().descriptorManager = this; }

DescriptorManager::~DescriptorManager() {
    DescriptorManager*& installed = threadState().descriptorManager;
    if (CHECKF_AT(kForeignDescriptorManager, installed == this))
        installed = nullptr;
}

void DescriptorManager::setLabel(const char*) {}

} // namespace kern
