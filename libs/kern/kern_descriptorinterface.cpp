#include "kern_descriptorinterface.h"

#include "core_check.h"
#include "kern_servermanagers.h"

namespace kern {
namespace {

DescriptorManager* manager() { return threadState().descriptorManager; }

} // namespace

DescriptorInterface::~DescriptorInterface() {
    if (manager() != nullptr)
        manager()->removeDescriptors(this);
}

void DescriptorInterface::writeReady(intptr_t) {}

bool DescriptorInterface::watchRead(intptr_t descriptor) {
    return CHECKF(manager() != nullptr) && CHECKF(manager()->watchRead(descriptor, this));
}

bool DescriptorInterface::watchWrite(intptr_t descriptor) {
    return CHECKF(manager() != nullptr) && CHECKF(manager()->watchWrite(descriptor, this));
}

void DescriptorInterface::unwatchRead(intptr_t descriptor) {
    if (manager() != nullptr)
        manager()->unwatchRead(descriptor);
}

void DescriptorInterface::unwatchWrite(intptr_t descriptor) {
    if (manager() != nullptr)
        manager()->unwatchWrite(descriptor);
}

} // namespace kern
