#include "core_deprecated_glist.h"

#include "core_check.h"

namespace core::detail {

bool GListBase::append(void* item) {
    if (!CHECKF((d_head == nullptr) == (d_tail == nullptr)))
        return false;
    Node* const node = new Node{d_tail, nullptr, item};
    (d_tail != nullptr ? d_tail->next : d_head) = node;
    d_tail = node;
    ++d_count;
    return true;
}

void* GListBase::first() {
    d_cursor = d_head;
    return next();
}

void* GListBase::next() {
    const Node* const node = d_cursor;
    if (node == nullptr)
        return nullptr;
    // What follows must point back here: the next node, or the list's tail.
    const Node* const back = node->next != nullptr ? node->next->previous : d_tail;
    const bool sound = CHECKF(back == node);
    d_cursor = sound ? node->next : nullptr;
    return sound ? node->item : nullptr;
}

GListBase::Node* GListBase::find(const void* item) const {
    Node* node = d_head;
    while (node != nullptr && node->item != item)
        node = node->next;
    return node;
}

void* GListBase::unlink(Node* node) {
    (node->previous != nullptr ? node->previous->next : d_head) = node->next;
    (node->next != nullptr ? node->next->previous : d_tail) = node->previous;
    if (d_cursor == node)
        d_cursor = node->next;
    --d_count;
    void* const item = node->item;
    delete node;
    return item;
}

} // namespace core::detail
